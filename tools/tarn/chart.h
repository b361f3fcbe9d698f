// A frame's histogram as a picture.
#ifndef TARN_TOOL_CHART_H_
#define TARN_TOOL_CHART_H_

#include <string>

#include "tools/tarn/statistics.h"

namespace tarn::tool {

enum class ChartKind { Svg, Png };

// One curve for each colour position, pixels on a logarithmic scale.
Bytes DrawHistogram(ChartKind kind, const std::string& title, const Statistics& statistics);

}  // namespace tarn::tool

#endif  // TARN_TOOL_CHART_H_
