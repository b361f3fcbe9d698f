// A frame's histogram as a picture.
#ifndef TARN_PICTURES_CHART_H_
#define TARN_PICTURES_CHART_H_

#include <string>

#include "frames/statistics.h"
#include "pictures/names.h"

namespace tarn::pictures {

enum class ChartKind { Svg, Png };

// One curve for each colour position, pixels on a logarithmic scale.
Bytes DrawHistogram(ChartKind kind, const std::string& title, const Statistics& statistics);

}  // namespace tarn::pictures

#endif  // TARN_PICTURES_CHART_H_
