// Passes every file of a folder to a fuzz target, in builds without a fuzzer: a fault that was fixed must not return.
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::puts("Name the folder of the seeds.");
        return 2;
    }
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        static_cast<void>(std::fprintf(stderr, "%s\n", entry.path().filename().c_str()));
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        ++count;
    }
    return count > 0 ? 0 : 1;
}
