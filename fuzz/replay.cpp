// Runs a fuzz target on each file of its corpus, without a fuzzer.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/decode.h"

int main(int count, char** arguments) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(count > 1 ? arguments[1] : ".")) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        std::printf("%s\n", entry.path().filename().c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++files;
    }
    return files > 0 ? 0 : 1;  // an empty corpus tests nothing
}
