// check_binned MOSAIC.pgm FRAME.pgm BINNED.pgm CELL GAIN qc|vx: whether a binned frame is what the
// mosaic's plain sums say.
#include <cstdlib>
#include <iostream>

#include "tests/tool/oracle/binned_oracle.h"

int main(int argc, char** argv) {
    if (argc != 7) {
        std::cerr << "usage: check_binned MOSAIC.pgm FRAME.pgm BINNED.pgm CELL GAIN qc|vx\n";
        return 2;
    }
    const Picture mosaic = ReadPgm(argv[1]), frame = ReadPgm(argv[2]);
    const int cell = std::atoi(argv[4]);
    const BinnedOracle oracle(
        mosaic, frame,
        {cell, std::strtof(argv[5], nullptr), cell == 4 && argv[6] == std::string("qc")});
    std::string fault = oracle.CheckFrame();
    if (fault.empty()) fault = oracle.CheckBinned(ReadPgm(argv[3]));
    std::cout << argv[3] << ": " << (fault.empty() ? "equals the mosaic's sums" : fault) << "\n";
    return fault.empty() ? 0 : 1;
}
