#pragma once

#include <QString>
#include <QtGlobal>

class FTPSessionClass;
class Globals;

// The one channel by which the FTP client tells the application what happens.
// Its reports stamp the main window's activity time, raise the completion flags
// the download waits on, and turn some texts into the words the user reads.
class FTPStatusClass {
public:
    explicit FTPStatusClass(Globals& globals, FTPSessionClass* session = nullptr);
    virtual ~FTPStatusClass() = default;

    FTPStatusClass(const FTPStatusClass&) = delete;
    FTPStatusClass& operator=(const FTPStatusClass&) = delete;

    virtual void Error_FTP(const QString& text);
    virtual void Progress_FTP(qint64 bytes);
    virtual void Successful_FTP(const QString& text);
    virtual void Response_FTP(const QString& text);
    virtual QString FormatBytes(qint64 bytes);
    virtual void Status_FTP(const QString& text);

    FTPSessionClass* Session = nullptr;

protected:
    Globals& m_globals;
};
