// A plain Bayer frame as a DNG that raw developers open.
#ifndef TARN_PICTURES_DNG_H_
#define TARN_PICTURES_DNG_H_

#include "frames/picture.h"
#include "pictures/names.h"

namespace tarn::pictures {

// Samples are stored as they are, 16 bits each, uncompressed. A DNG can describe a pattern of more
// than 2x2 only in ways that no developer reads: a multi-cell frame must be binned first. Throws
// UserError for sizes that do not fit.
Bytes EncodeDng(const Picture& picture);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_DNG_H_
