#include "FTPDirectoryClass.h"

FTPDirectoryClass::FTPDirectoryClass(const QString& name, const QString& parentName)
    : Name(name), CurrentSubDirectory(GetSubDirectoryCount()), ParentDirectory(parentName)
{
}

void FTPDirectoryClass::DeleteFile(const QString& name)
{
    Files.removeOne(name);
}

void FTPDirectoryClass::AddSubDirectory(const QString& path)
{
    SubDirectories.append(path);
    CurrentSubDirectory = GetSubDirectoryCount();
}

QString FTPDirectoryClass::GetNextSubDirectoryName()
{
    const QString name = GetCurrentSubDirectoryName();
    if (CurrentSubDirectory >= 0)
        --CurrentSubDirectory;
    return name;
}

void FTPDirectoryClass::DeleteSubDirectory(const QString& path)
{
    SubDirectories.removeOne(path);
}

QString FTPDirectoryClass::GetCurrentSubDirectoryName() const
{
    if (CurrentSubDirectory < 0 || CurrentSubDirectory >= SubDirectories.size())
        return {};
    return SubDirectories.at(CurrentSubDirectory);
}
