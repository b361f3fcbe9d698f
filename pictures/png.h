// Pictures to look at.
#ifndef TARN_PICTURES_PNG_H_
#define TARN_PICTURES_PNG_H_

#include "frames/picture.h"
#include "pictures/names.h"

namespace tarn::pictures {

// A 16-bit grey PNG, linear, of the codes moved up to 16 bits. Both throw UserError for a frame
// that is too small or too large for them.
Bytes EncodeGreyPng(const Picture& picture);

// A picture in colour: black level taken off, white balance, brightened until the brightest
// hundredth is white. Interpolated, or with `half` one pixel for each 2x2 of the frame.
Bytes DevelopPng(Picture picture, bool half);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_PNG_H_
