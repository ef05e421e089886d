#pragma once

#include <QByteArray>
#include <QDir>
#include <QString>
#include <QStringList>

#include <functional>

// The user's preferences: key/value pairs kept in one plain text file in the
// user's configuration folder. The application owns one object (no statics),
// so each test starts from a fresh state and never sees another test's keys.
//
// The file alternates a key line and a value line, each ended by "\n", in
// UTF-8, without escaping; bytes that are not UTF-8 are kept as they are. Keys compare without regard to case; the first
// occurrence of a key wins. Keys nobody here knows are kept and written back
// in place. No file operation reports an error to the user: a missing or
// unreadable file simply leaves every key at its default.
class REALEasyPrefs {
public:
    // Path of the preferences file, set by InitPrefFile.
    QString prefFile;
    // Index 0 is a placeholder; entries run from 1 to the upper bound and the
    // two lists always have the same length.
    QStringList prefNames{QString()};
    QStringList prefItems{QString()};

    // Test seam: called after the new contents are written and before they
    // replace the old file; returning false abandons the save.
    std::function<bool()> beforeCommit;

    // Points prefFile at fileName in the configuration folder (creating the
    // folder), then reads the file, or creates it empty when it is missing.
    void InitPrefFile(const QString& fileName);

    // Replaces the entries with those held in bytes (the file's contents).
    void ReadFrom(const QByteArray& bytes);

    // The value of the first entry named name (case ignored), else defaultValue.
    QString GetPrefString(const QString& name, const QString& defaultValue) const;
    // The value's leading decimal number (after any blanks) truncated toward
    // zero and clamped to the int range; a value without one gives 0.
    int GetPrefNumber(const QString& name, int defaultValue) const;
    // True only when the value is "true", case ignored.
    bool GetPrefBoolean(const QString& name, bool defaultValue) const;

    // Changes the first entry named name (case ignored), else appends one.
    // Memory only; WritePrefsFile saves.
    void SetPrefString(const QString& name, const QString& value);
    void SetPrefNumber(const QString& name, int value);
    void SetPrefBoolean(const QString& name, bool value);

    // The file's contents for the present entries.
    QByteArray Serialise() const;

    // Replaces the file with the present entries, all or nothing; true on success.
    bool WritePrefsFile();

private:
    static void RemoveStaleCopies(const QDir& folder, const QString& fileName);
    qsizetype IndexOf(const QString& name) const;
};
