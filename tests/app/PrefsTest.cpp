#include "QtPrinters.h"
#include "REALEasyPrefs.h"
#include "XdgHomes.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <limits>

namespace {

const QString kFile = QStringLiteral("VexilUtilPrefs");

class Prefs : public ::testing::Test {
protected:
    XdgHomes homes;

    REALEasyPrefs Read(const QByteArray& bytes) const
    {
        homes.WritePrefs(bytes);
        REALEasyPrefs prefs;
        prefs.InitPrefFile(kFile);
        return prefs;
    }
};

TEST_F(Prefs, LinesAlternateKeyAndValue)
{
    const struct {
        const char* name;
        QByteArray file;
        QStringList keys, values;
    } rows[] = {
        {"odd count, no final newline", "A\n1\nB", {"A", "B"}, {"1", ""}},
        {"CR kept", "A\r\n1\r\n", {"A\r"}, {"1\r"}},
        {"empty lines are entries", "\n\nA\n\n", {"", "A"}, {"", ""}},
        {"blanks, UTF-8 and byte order mark kept", "\xEF\xBB\xBF K \n  x y  \n\xE2\x86\x92\n\n",
         {QStringLiteral("\uFEFF K "), "\u2192"}, {"  x y  ", ""}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const REALEasyPrefs prefs = Read(row.file);
        EXPECT_EQ(prefs.prefNames, QStringList{QString()} + row.keys);
        EXPECT_EQ(prefs.prefItems, QStringList{QString()} + row.values);
    }
}

TEST_F(Prefs, NumbersAndBooleans)
{
    constexpr int kMax = std::numeric_limits<int>::max();
    constexpr int kMin = std::numeric_limits<int>::min();
    const struct {
        const char* value; // nullptr: key missing
        int defaultValue, number;
        bool defaultFlag, flag;
    } rows[] = {
        {"abc", 7, 0, true, false},          {"-40", 7, -40, true, false},
        {"+3", 7, 3, true, false},           {"12.9", 7, 12, true, false},
        {"-5.9", 7, -5, true, false},        {nullptr, -12, -12, true, true},
        {"2147483648", 0, kMax, true, false}, {"-99999999999999999999", 0, kMin, true, false},
        {"TRUE", 0, 0, false, true},         {" true", 0, 0, true, false},
        {"", 7, 0, true, false},             {" \t7", 5, 7, true, false},
    };
    QByteArray file;
    for (const auto& row : rows)
        if (row.value)
            file += "k" + QByteArray::number(&row - rows) + "\n" + row.value + "\n";
    const REALEasyPrefs prefs = Read(file);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value ? row.value : "missing");
        const QString key = "K" + QString::number(&row - rows);
        EXPECT_EQ(prefs.GetPrefNumber(key, row.defaultValue), row.number);
        EXPECT_EQ(prefs.GetPrefBoolean(key, row.defaultFlag), row.flag);
    }
}

TEST_F(Prefs, WritingKeepsUnknownKeysInPlaceAndAppendsNewOnes)
{
    REALEasyPrefs prefs = Read("FTPServer\nmirror.example\nColor\nred\ncolor\nblue\nVerbose\nfalse\n");
    EXPECT_EQ(prefs.GetPrefString("Absent", "d"), "d");
    EXPECT_EQ(prefs.GetPrefString("COLOR", "none"), "red") << "the first of two equal keys wins";
    prefs.SetPrefString("cOLOR", "green");
    prefs.SetPrefBoolean("Trace", true);
    prefs.SetPrefNumber("Count", -40);
    prefs.SetPrefBoolean("verbose", true);
    ASSERT_TRUE(prefs.WritePrefsFile());
    EXPECT_EQ(homes.Prefs(),
              "FTPServer\nmirror.example\nColor\ngreen\ncolor\nblue\nVerbose\ntrue\nTrace\ntrue\nCount\n-40\n");
}

TEST_F(Prefs, FirstStartCreatesTheFolderAndAnEmptyFile)
{
    REALEasyPrefs prefs;
    prefs.InitPrefFile(kFile);
    EXPECT_EQ(prefs.prefFile, homes.PrefsPath());
    EXPECT_EQ(homes.Prefs(), QByteArray());
    EXPECT_EQ(prefs.GetPrefNumber("Count", -7), -7);
}

TEST_F(Prefs, FailedSaveKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    REALEasyPrefs prefs = Read("FolderPath\n/old/\n");
    prefs.SetPrefString("FolderPath", "/new/");
    prefs.beforeCommit = [] { return false; };
    EXPECT_FALSE(prefs.WritePrefsFile());
    EXPECT_EQ(homes.Prefs(), "FolderPath\n/old/\n");
    EXPECT_EQ(QDir(homes.ConfigPath()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{kFile});

    // A folder where the file should be: nothing read, nothing written, no crash.
    QFile::remove(homes.PrefsPath());
    ASSERT_TRUE(QDir().mkpath(homes.PrefsPath()));
    REALEasyPrefs blocked;
    blocked.InitPrefFile(kFile);
    EXPECT_EQ(blocked.prefNames, QStringList{QString()});
    EXPECT_FALSE(blocked.WritePrefsFile());
    EXPECT_TRUE(QFileInfo(homes.PrefsPath()).isDir());
}

} // namespace
