#include "QtPrinters.h"
#include "REALEasyPrefs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace {

const QString kFile = QStringLiteral("VexilUtilPrefs");

class Prefs : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home.isValid());
        hadConfigHome = qEnvironmentVariableIsSet("XDG_CONFIG_HOME");
        savedConfigHome = qgetenv("XDG_CONFIG_HOME");
        // A folder that does not exist yet: InitPrefFile must create it.
        configDir = home.filePath("config");
        qputenv("XDG_CONFIG_HOME", configDir.toUtf8());
    }
    void TearDown() override
    {
        if (hadConfigHome)
            qputenv("XDG_CONFIG_HOME", savedConfigHome);
        else
            qunsetenv("XDG_CONFIG_HOME");
    }

    QString Path() const { return configDir + "/" + kFile; }
    void Store(const QByteArray& bytes) const
    {
        QDir().mkpath(configDir);
        QFile file(Path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    QByteArray Stored() const
    {
        QFile file(Path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }
    REALEasyPrefs Read(const QByteArray& bytes) const
    {
        Store(bytes);
        REALEasyPrefs prefs;
        prefs.InitPrefFile(kFile);
        return prefs;
    }

    QTemporaryDir home;
    QString configDir;
    bool hadConfigHome = false;
    QByteArray savedConfigHome;
};

TEST_F(Prefs, FirstStartCreatesAnEmptyFileAndEveryGetterGivesItsDefault)
{
    REALEasyPrefs prefs;
    prefs.InitPrefFile(kFile);
    EXPECT_EQ(prefs.prefFile, Path());
    ASSERT_TRUE(QFileInfo(Path()).isFile());
    EXPECT_EQ(QFileInfo(Path()).size(), 0);
    EXPECT_EQ(prefs.prefNames, QStringList{QString()});
    EXPECT_EQ(prefs.prefItems, QStringList{QString()});
    EXPECT_EQ(prefs.GetPrefString("FolderPath", "/x/"), "/x/");
    EXPECT_EQ(prefs.GetPrefNumber("Count", -7), -7);
    EXPECT_TRUE(prefs.GetPrefBoolean("Trace", true));
    EXPECT_FALSE(prefs.GetPrefBoolean("Trace", false));
}

TEST_F(Prefs, LinesAlternateKeyAndValue)
{
    struct Row {
        const char* name;
        QByteArray file;
        QStringList keys, values;
    };
    const Row rows[] = {
        {"pairs", "A\n1\nB\n2\n", {"A", "B"}, {"1", "2"}},
        {"odd line count", "A\n1\nB\n", {"A", "B"}, {"1", ""}},
        {"no final newline", "A\n1\nB\n2", {"A", "B"}, {"1", "2"}},
        {"odd, no final newline", "A\n1\nB", {"A", "B"}, {"1", ""}},
        {"CR kept", "A\r\n1\r\n", {"A\r"}, {"1\r"}},
        {"empty lines are entries", "\n\nA\n\n", {"", "A"}, {"", ""}},
        {"blanks and UTF-8 kept", " K \n  x y  \n\xC3\x9C" "ber\n\xE2\x86\x92\n",
         {" K ", "\u00DCber"}, {"  x y  ", "\u2192"}},
        {"byte order mark kept", "\xEF\xBB\xBFK\nv\n", {QStringLiteral("\uFEFFK")}, {"v"}},
        {"broken UTF-8 stays on its line", "\xC3\nA\n", {QString(QChar(0xDCC3))}, {"A"}},
        {"empty file", "", {}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const REALEasyPrefs prefs = Read(row.file);
        EXPECT_EQ(prefs.prefNames, QStringList{QString()} + row.keys);
        EXPECT_EQ(prefs.prefItems, QStringList{QString()} + row.values);
    }
}

TEST_F(Prefs, NumberIsTheLeadingDecimalTruncatedAndClamped)
{
    constexpr int kMax = std::numeric_limits<int>::max();
    constexpr int kMin = std::numeric_limits<int>::min();
    struct Row {
        const char* value; // nullptr: key missing
        int defaultValue;
        int expected;
    };
    const Row rows[] = {
        {"abc", 7, 0},         {"", 7, 0},           {" \t7", 5, 7},         {"-", 5, 0},
        {".5", 5, 0},          {"-40", 7, -40},      {"+3", 7, 3},         {"12.9", 7, 12},
        {"-5.9", 7, -5},       {"12abc", 7, 12},     {nullptr, -12, -12},  {nullptr, kMin, kMin},
        {"2147483647", 0, kMax},   {"2147483648", 0, kMax},   {"99999999999999999999", 0, kMax},
        {"-2147483648", 0, kMin},  {"-2147483649", 0, kMin},  {"-99999999999999999999", 0, kMin},
    };
    QByteArray file;
    for (const Row& row : rows)
        if (row.value)
            file += "n" + QByteArray::number(&row - rows) + "\n" + row.value + "\n";
    const REALEasyPrefs prefs = Read(file);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value ? row.value : "missing");
        EXPECT_EQ(prefs.GetPrefNumber("N" + QString::number(&row - rows), row.defaultValue), row.expected);
    }
}

TEST_F(Prefs, BooleanIsTrueOnlyForTheWordTrue)
{
    struct Row {
        const char* value; // nullptr: key missing
        bool defaultValue;
        bool expected;
    };
    const Row rows[] = {
        {"TRUE", false, true}, {"true", false, true},  {"", true, false},       {"yes", true, false},
        {"1", true, false},    {"false", true, false}, {" true", true, false},  {nullptr, true, true},
        {nullptr, false, false},
    };
    QByteArray file;
    for (const Row& row : rows)
        if (row.value)
            file += "b" + QByteArray::number(&row - rows) + "\n" + row.value + "\n";
    const REALEasyPrefs prefs = Read(file);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.value ? row.value : "missing");
        EXPECT_EQ(prefs.GetPrefBoolean("B" + QString::number(&row - rows), row.defaultValue), row.expected);
    }
}

TEST_F(Prefs, FirstOccurrenceOfADuplicatedKeyWinsForReadingAndSetting)
{
    REALEasyPrefs prefs = Read("Color\nred\ncolor\nblue\n");
    EXPECT_EQ(prefs.GetPrefString("COLOR", "none"), "red");
    prefs.SetPrefString("cOLOR", "green");
    EXPECT_EQ(prefs.GetPrefString("color", "none"), "green");
    ASSERT_TRUE(prefs.WritePrefsFile());
    EXPECT_EQ(Stored(), QByteArray("Color\ngreen\ncolor\nblue\n"));
}

TEST_F(Prefs, ReadingNeverAddsAKey)
{
    const QByteArray original = "Known\n5\nEmpty\n\n";
    REALEasyPrefs prefs = Read(original);
    EXPECT_EQ(prefs.GetPrefString("Absent", "d"), "d");
    EXPECT_EQ(prefs.GetPrefNumber("AbsentNumber", 3), 3);
    EXPECT_TRUE(prefs.GetPrefBoolean("AbsentFlag", true));
    EXPECT_EQ(prefs.GetPrefString("Empty", "d"), "");
    EXPECT_EQ(prefs.prefNames.size(), 3);
    EXPECT_EQ(prefs.prefItems.size(), 3);
    ASSERT_TRUE(prefs.WritePrefsFile());
    EXPECT_EQ(Stored(), original);
}

TEST_F(Prefs, UnknownKeysAndBlanksSurviveInPlaceAndNewKeysFollowInFirstSetOrder)
{
    REALEasyPrefs prefs = Read("FTPServer\nmirror.example\nFolderPath\n /a b/c/ \nVerbose\nfalse\n");
    prefs.SetPrefBoolean("Trace", true);
    prefs.SetPrefNumber("Count", -40);
    prefs.SetPrefBoolean("verbose", true);
    prefs.SetPrefString("Trace", "");
    ASSERT_TRUE(prefs.WritePrefsFile());
    const QByteArray expected = "FTPServer\nmirror.example\nFolderPath\n /a b/c/ \nVerbose\ntrue\nTrace\n\nCount\n-40\n";
    EXPECT_EQ(Stored(), expected);

    REALEasyPrefs again;
    again.InitPrefFile(kFile);
    EXPECT_EQ(again.GetPrefString("folderpath", ""), " /a b/c/ ");
    EXPECT_EQ(again.GetPrefNumber("Count", 0), -40);
    EXPECT_EQ(again.GetPrefString("Trace", "x"), "");
}

TEST_F(Prefs, FailureBeforeTheRenameKeepsTheOldFileAndLeavesNoTemporaryFile)
{
    const QByteArray original = "FolderPath\n/old/\n";
    REALEasyPrefs prefs = Read(original);
    prefs.SetPrefString("FolderPath", "/new/");
    int calls = 0;
    prefs.beforeCommit = [&calls] {
        ++calls;
        return false;
    };
    EXPECT_FALSE(prefs.WritePrefsFile());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(Stored(), original);
    EXPECT_EQ(QDir(configDir).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot),
              QStringList{kFile});

    prefs.beforeCommit = [] { return true; };
    EXPECT_TRUE(prefs.WritePrefsFile());
    EXPECT_EQ(Stored(), QByteArray("FolderPath\n/new/\n"));
}

TEST_F(Prefs, UnreadablePathGivesNoEntriesAndNoCrash)
{
    ASSERT_TRUE(QDir().mkpath(Path()));
    REALEasyPrefs prefs;
    prefs.InitPrefFile(kFile);
    EXPECT_EQ(prefs.prefNames, QStringList{QString()});
    EXPECT_EQ(prefs.prefItems, QStringList{QString()});
    EXPECT_EQ(prefs.GetPrefNumber("Count", 9), 9);
    prefs.SetPrefString("Key", "value");
    EXPECT_FALSE(prefs.WritePrefsFile());
    EXPECT_TRUE(QFileInfo(Path()).isDir());
}

} // namespace
