// Replays fuzz inputs without libFuzzer: every regular file named on the command line, or
// found (sorted by name) in a folder named there, goes once through LLVMFuzzerTestOneInput.
// Fails when no input was found, so a missing corpus cannot pass unnoticed.
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const fs::path arg(argv[i]);
        if (fs::is_directory(arg)) {
            for (const fs::directory_entry& e : fs::directory_iterator(arg))
                if (e.is_regular_file())
                    inputs.push_back(e.path());
        } else if (fs::is_regular_file(arg)) {
            inputs.push_back(arg);
        }
    }
    std::sort(inputs.begin(), inputs.end());
    if (inputs.empty()) {
        fprintf(stderr, "replay: no inputs found\n");
        return 1;
    }
    for (const fs::path& path : inputs) {
        std::ifstream in(path, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in),
                                      std::istreambuf_iterator<char>()};
        fprintf(stderr, "replay: %s (%zu bytes)\n", path.filename().c_str(), bytes.size());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    fprintf(stderr, "replay: %zu inputs\n", inputs.size());
    return 0;
}
