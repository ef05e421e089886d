#pragma once

#include <QString>
#include <QStringList>

// One server directory of a walk: its plain files and the full paths of its
// subdirectories. Both are taken from the end, so a walk visits them in the
// reverse order of the listing.
class FTPDirectoryClass {
public:
    FTPDirectoryClass(const QString& name, const QString& parentName);

    QStringList Files;
    QString Name;
    QStringList SubDirectories;
    int CurrentSubDirectory = -1;
    QString ParentDirectory;

    void AddFile(const QString& name) { Files.append(name); }
    void DeleteFile(const QString& name);
    QString GetNextFileName() const { return Files.isEmpty() ? QString() : Files.last(); }
    int GetFileCount() const { return static_cast<int>(Files.size()) - 1; }
    void AddSubDirectory(const QString& path);
    int GetSubDirectoryCount() const { return static_cast<int>(SubDirectories.size()) - 1; }
    QString GetNextSubDirectoryName();
    void DeleteSubDirectory(const QString& path);
    QString GetCurrentSubDirectoryName() const;
    QString GetName() const { return Name; }
    QString GetParentDirectoryName() const { return ParentDirectory; }
};
