// Writes the generated sample market into an installation directory:
//   make_sample_market DIR [--stocks N]
// A data folder that holds anything but a generated market is left alone.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "host/sample_market.h"

namespace {

// True if DIR/data is missing, empty (a build system such as Ninja makes the folder of an output
// before it runs the command) or was written by this tool, and so may be replaced.
bool MayReplace(const std::filesystem::path& data) {
    std::error_code error;
    if (!std::filesystem::exists(data) || std::filesystem::is_empty(data, error)) return true;
    std::ifstream readme(data / "README.txt");
    std::string first;
    std::getline(readme, first);
    return first == ny::kSampleMarketLabel;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && !(argc == 4 && std::string(argv[2]) == "--stocks")) {
        std::fprintf(stderr, "usage: make_sample_market DIR [--stocks N]\n");
        return 2;
    }
    ny::SampleMarketOptions options;
    if (argc == 4) options.stockCount = std::atoi(argv[3]);
    const std::filesystem::path data = std::filesystem::path(argv[1]) / "data";
    if (!MayReplace(data)) {
        std::fprintf(stderr, "make_sample_market: %s holds data that were not generated; not touched\n",
                     data.string().c_str());
        return 1;
    }
    std::error_code ignored;
    std::filesystem::remove_all(data, ignored);
    std::string error;
    if (!ny::MakeSampleMarket(argv[1], options, &error)) {
        std::fprintf(stderr, "make_sample_market: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
