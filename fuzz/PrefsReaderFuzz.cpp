// Fuzz target for the preferences reader: any bytes, read as the file's
// contents, must give consistent entries, getters that agree with a separate
// reading of the value, setters that read back, and a file image that reads
// back to the same entries and keeps the file's bytes.
//
// Built with VEXIL_PREFS_REPLAY_MAIN it also gets a main() that replays a
// corpus folder, so the seeds run with every compiler as an ordinary test.

#include "REALEasyPrefs.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

[[noreturn]] void Violated(const char* rule, int line)
{
    std::fprintf(stderr, "PrefsReaderFuzz.cpp:%d: invariant violated: %s\n", line, rule);
    __builtin_trap();
}

#define PREFS_FUZZ_CHECK(cond)            \
    do {                                  \
        if (!(cond))                      \
            Violated(#cond, __LINE__);    \
    } while (0)

// The number the value starts with, by way of strtod on its sign and whole
// digits (truncation toward zero drops any fraction), clamped to int.
int ReferenceNumber(const QString& value)
{
    const QByteArray text = value.toUtf8();
    std::string prefix;
    qsizetype i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
        ++i;
    if (i < text.size() && (text[i] == '-' || text[i] == '+'))
        prefix += text[i++];
    while (i < text.size() && text[i] >= '0' && text[i] <= '9')
        prefix += text[i++];
    const double number = std::strtod(prefix.c_str(), nullptr);
    if (number >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (number <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return static_cast<int>(std::trunc(number));
}

void CheckConsistent(const REALEasyPrefs& prefs)
{
    PREFS_FUZZ_CHECK(prefs.prefNames.size() >= 1);
    PREFS_FUZZ_CHECK(prefs.prefNames.size() == prefs.prefItems.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Raw data, not a copy: a read past the input's last byte is then a sanitizer report.
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    REALEasyPrefs prefs;
    prefs.ReadFrom(bytes);
    CheckConsistent(prefs);

    // Two lines to an entry, the last one possibly alone; a last line without "\n" still counts.
    const qsizetype lines = bytes.count('\n') + (size > 0 && data[size - 1] != '\n' ? 1 : 0);
    PREFS_FUZZ_CHECK(prefs.prefNames.size() - 1 == (lines + 1) / 2);
    for (qsizetype i = 1; i < prefs.prefNames.size(); ++i)
        PREFS_FUZZ_CHECK(!prefs.prefNames[i].contains(u'\n') && !prefs.prefItems[i].contains(u'\n'));

    // The file image reads back to the same entries, and a file of whole entries is its own image.
    const QStringList names = prefs.prefNames;
    const QStringList items = prefs.prefItems;
    REALEasyPrefs reread;
    const QByteArray image = prefs.Serialise();
    reread.ReadFrom(image);
    CheckConsistent(reread);
    PREFS_FUZZ_CHECK(reread.prefNames == names && reread.prefItems == items);
    if (lines % 2 == 0 && (size == 0 || data[size - 1] == '\n'))
        PREFS_FUZZ_CHECK(image == bytes);

    // Getters: the first entry is always found under its own name; reading never adds a key.
    const QString sentinel = QStringLiteral("\u0001missing");
    if (names.size() > 1) {
        PREFS_FUZZ_CHECK(prefs.GetPrefString(names[1], sentinel) == items[1]);
        PREFS_FUZZ_CHECK(prefs.GetPrefNumber(names[1], 17) == ReferenceNumber(items[1]));
        PREFS_FUZZ_CHECK(prefs.GetPrefBoolean(names[1], true) ==
                         (items[1].compare(QLatin1String("true"), Qt::CaseInsensitive) == 0));
    }
    for (const QString& key : {names.last(), QStringLiteral("FolderPath"), QString()}) {
        const QString value = prefs.GetPrefString(key, sentinel);
        PREFS_FUZZ_CHECK(value == sentinel || items.contains(value));
        PREFS_FUZZ_CHECK(prefs.GetPrefNumber(key, -3) == (value == sentinel ? -3 : ReferenceNumber(value)));
        PREFS_FUZZ_CHECK(prefs.GetPrefBoolean(key, false) ==
                         (value != sentinel && value.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0));
    }
    PREFS_FUZZ_CHECK(prefs.prefNames == names && prefs.prefItems == items);

    // Setters read back; an existing key keeps its place, a new one is appended.
    const QString lastKey = names.last();
    const QString value = items.size() > 1 ? items[1] : QStringLiteral("v");
    prefs.SetPrefString(lastKey, value);
    CheckConsistent(prefs);
    PREFS_FUZZ_CHECK(prefs.GetPrefString(lastKey, sentinel) == value);
    PREFS_FUZZ_CHECK(prefs.prefNames.size() == names.size() + (names.size() == 1 ? 1 : 0));

    int number = 0;
    std::memcpy(&number, data, std::min(size, sizeof number));
    const QString numberKey = QStringLiteral("Fuzz\u00DFNumber");
    const qsizetype before = prefs.prefNames.size();
    const bool known = prefs.GetPrefString(numberKey, sentinel) != sentinel;
    prefs.SetPrefNumber(numberKey, number);
    PREFS_FUZZ_CHECK(prefs.prefNames.size() == before + (known ? 0 : 1));
    PREFS_FUZZ_CHECK(prefs.GetPrefNumber(numberKey.toLower(), ~number) == number);
    prefs.SetPrefBoolean(numberKey, size % 2 == 1);
    PREFS_FUZZ_CHECK(prefs.GetPrefBoolean(numberKey, size % 2 == 0) == (size % 2 == 1));
    PREFS_FUZZ_CHECK(prefs.prefNames.size() == before + (known ? 0 : 1));
    CheckConsistent(prefs);
    return 0;
}

#ifdef VEXIL_PREFS_REPLAY_MAIN

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

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
        // Traps on a broken invariant, naming it.
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu corpus files replayed, %d failed\n", files.size(), failures);
    return failures == 0 ? 0 : 1;
}

#endif
