// Replays a fuzz corpus folder through the fuzz target without libFuzzer, so
// the seeds (and any crash input added to them) run with every compiler as an
// ordinary test. A seed named accept-* must also pass Verify, one named
// reject-* must fail it.

#include "MCULoader.h"

#include <QByteArray>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool Verifies(const std::vector<char>& bytes)
{
    MCULoader reader(nullptr, nullptr);
    reader.bs.OpenBytes(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
    reader.m_fIsReadOK = true;
    reader.m_fIsEndOfFile = false;
    return reader.VerifyOpenStream();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_FOLDER\n", argv[0]);
        return 2;
    }
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1], error))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    if (error || files.empty()) {
        std::fprintf(stderr, "no corpus files in %s\n", argv[1]);
        return 1;
    }
    std::sort(files.begin(), files.end());

    int failures = 0;
    for (const auto& path : files) {
        std::ifstream in(path, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        if (!in.good() && !in.eof()) {
            std::fprintf(stderr, "cannot read %s\n", path.c_str());
            ++failures;
            continue;
        }
        // Aborts on a broken invariant, naming it.
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());

        const std::string name = path.filename().string();
        const bool accept = name.starts_with("accept-");
        if (accept || name.starts_with("reject-")) {
            if (Verifies(bytes) != accept) {
                std::fprintf(stderr, "%s: Verify gave %s\n", name.c_str(), accept ? "false" : "true");
                ++failures;
            }
        }
    }
    std::printf("%zu corpus files replayed, %d failed\n", files.size(), failures);
    return failures == 0 ? 0 : 1;
}
