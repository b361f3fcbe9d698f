// What stands in frames/ and pictures/ goes by its own name in the tool.
#ifndef TARN_TOOL_CLI_NAMES_H_
#define TARN_TOOL_CLI_NAMES_H_

namespace tarn::frames {}
namespace tarn::pictures {}

namespace tarn::tool {
using namespace frames;
using namespace pictures;
}  // namespace tarn::tool

#endif  // TARN_TOOL_CLI_NAMES_H_
