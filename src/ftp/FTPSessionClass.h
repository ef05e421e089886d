#pragma once

#include "FTPCommandSocket.h"
#include "FTPConnectionTimer.h"
#include "FTPDataSocket.h"
#include "FTPStatusClass.h"

#include <QByteArray>
#include <QFileInfo>
#include <QList>
#include <QObject>
#include <QSslCertificate>
#include <QString>
#include <QStringConverter>
#include <QStringList>

#include <functional>
#include <memory>
#include <utility>

class Clock;
class FTPDirectoryClass;
class Globals;

// One FTP session: one control connection, one data connection, one inactivity
// timer and one status sink. Nothing blocks: an operation sends its first
// command and returns; each final reply line then moves its step machine one
// step, and the end is told only through FTPStatusInstance.
class FTPSessionClass {
public:
    FTPSessionClass(Globals& globals, Clock& clock);
    FTPSessionClass(Globals& globals, Clock& clock, const QString& id);
    ~FTPSessionClass();

    FTPSessionClass(const FTPSessionClass&) = delete;
    FTPSessionClass& operator=(const FTPSessionClass&) = delete;

    QString ServerAddress;
    QString ServerUserID;
    QString ServerPassword;
    QString ServerDirectory;
    QString LocalDirectory;
    QStringList Files;
    QByteArray Buffer;
    int SendBufferSize = 2048;
    qint64 BytesReceived = 0;
    int CurrentDirectoryIndex = 0;
    int CurrentFileIndex = 0;
    QString DirectoryFileList;
    QList<std::shared_ptr<FTPDirectoryClass>> DirList;
    bool NT = false;
    QStringList Paths;
    int DataPortStart = 30003;
    int DataPortEnd = 30100;
    int DataPort = 0;
    int Timeout = 20000;
    bool UseNameList = false;
    QString ChmodMask;
    QStringConverter::Encoding ServerTextEncoding = QStringConverter::Latin1;
    bool ShowInvisible = false;
    int CommandPort = 21;
    int PassivePort = 0;
    bool IgnoreCancel = false;
    QByteArray FTPCommandCRLF;
    std::unique_ptr<FTPStatusClass> FTPStatusInstance;
    QString FTPSessionType;
    QString FileDelimiter;
    int FileCount = 0;
    QString DeleteDirectory;
    FTPDataSocket* DataSocket = nullptr;
    QString CurrentWorkingDirectory;
    QString CurrentFTPStep;
    std::unique_ptr<FTPConnectionTimer> ConnectionTimer;
    FTPCommandSocket* CommandSocket = nullptr;
    QString ID;
    bool PassiveMode = true;
    QString FTPTransferType;
    QList<QFileInfo> FileFolderItems;
    double SessionStartTime = 0;
    qint64 RestartByteCount = 0;
    QString DirectCommandText;
    bool FTPS = false;
    // Certificates trusted for AUTH TLS besides the system's own (a private
    // mirror's authority, or a test server's certificate).
    QList<QSslCertificate> TrustedCertificates;

    // A reply line that has not ended after this many bytes ends the session:
    // no server needs it, and a hostile one must not grow the buffer forever.
    static constexpr qsizetype kMaxReplyLineBytes = 64 * 1024;

    void SetLoginInfo(const QString& server, const QString& userID, const QString& password);
    void SetTimeoutSeconds(int seconds) { Timeout = seconds * 1000; }
    void SetStatusReporting(bool on);
    void SetServerEncoding(QStringConverter::Encoding encoding) { ServerTextEncoding = encoding; }
    void SetDataPortRange(int start, int end);
    void SetLocalDirectoryPathName(const QString& path) { LocalDirectory = path; }
    QString GetLocalDirectoryPathName() const { return LocalDirectory; }
    void SetServerDirectoryPathName(const QString& path) { ServerDirectory = path; }
    QString GetServerDirectoryPathName() const { return ServerDirectory; }
    void SetLocalFolderItem(const QFileInfo& item);
    void AddFileName(const QString& name) { Files.append(name); }
    void DeleteFileName(const QString& name) { Files.removeAll(name); }
    int GetFileCount() const { return static_cast<int>(Files.size()) - 1; }
    QString GetNextFileName();
    void AddFile(const QFileInfo& item) { FileFolderItems.append(item); }
    QFileInfo GetNextFolderItem();
    QString GetCurrentFTPStep() const { return CurrentFTPStep; }
    QString GetFTPSessionType() const { return FTPSessionType; }

    // The engine.
    void NextFTPStep(const QString& step, const QString& command, const QString& statusText);
    void ParseCommandBuffer();
    void ParseCommandBuffer(int code);
    void ResetConnectionTimer();
    static bool SuccessfulMessage(const QString& text);
    void EndFTPSession(const QString& text);
    void CancelFTPSession(const QString& text);
    bool SocketsActive();
    double CalcSessionTime() const;

    // Operations of a session.
    void Logon();
    void Logoff();
    void ChangeDir();
    void ParentDir();
    void GetWorkingDir();
    void MakeDir();
    void RemoveDir();
    void DeleteSingleFile();
    void ChmodSingleFile();
    void RenameSingleFile();
    void GetStatus();
    void GetSystemInfo();
    void SITECommand(const QString& text);
    void DirectCommand(const QString& text);
    void AbortTransfer();

    // The data side's port arithmetic.
    void NextDataPort();
    QString BuildPortString() const;
    static int CalculatePassivePort(const QString& line);
    static QString CalculatePassiveAddress(const QString& line);
    // Points the data connection at the port of a 227 reply. A reply without a
    // valid port ends the operation instead, and the result is false.
    bool CalcSetPassivePort(const QString& line);
    void SetPassivePort(int port);

    // Step machines, one per operation.
    void ExecuteAbortTransferSteps(const QString& line, int code);
    void ExecuteChangeDirSteps(const QString& line, int code);
    void ExecuteParentDirSteps(const QString& line, int code);
    void ExecuteDeleteSingleFileSteps(const QString& line, int code);
    void ExecuteRemoveDirSteps(const QString& line, int code);
    void ExecuteMakeDirSteps(const QString& line, int code);
    void ExecuteRenameSingleFileSteps(const QString& line, int code);
    void ExecuteChmodSingleFileSteps(const QString& line, int code);
    void ExecuteGetWorkingDirSteps(const QString& line, int code);
    void ExecuteLogonSteps(const QString& line, int code);
    void ExecuteLogoffSteps(const QString& line, int code);
    void ExecuteSystemInfoSteps(const QString& line, int code);
    void ExecuteStatusSteps(const QString& line, int code);
    void ExecuteSITESteps(const QString& line, int code);
    void ExecuteDirectCommandSteps(const QString& line, int code);

    // Events of the control connection, forwarded by the socket.
    void CommandDataAvailable(FTPCommandSocket* socket);
    void CommandSocketError(FTPCommandSocket* socket, int code);
    // Appends received bytes to Buffer and handles every complete line, with a
    // pass of the event loop after each.
    void ReceiveControlBytes(const QByteArray& bytes, FTPCommandSocket* from = nullptr);

private:
    struct StepCommand {
        QString step;
        QString command;
        QString statusText;
    };
    enum class FinalTest { A, B };

    void Construct();
    // The entry of an operation on a logged-on session: nothing when the
    // connection is gone, else the type is set and the machine enters START.
    bool EnterOperation(const QString& type);
    void StartOperation(const QString& type, const QString& entryText);
    void ReportEnd(const QString& text);
    bool AtStep(const char* step) const;
    void Dispatch(const QString& line, int code);
    QString Decode(const QByteArray& bytes) const;
    void UnexpectedReply(const QString& line, bool tlsStep = false);
    void UnknownStep();
    void StopTimer();
    void ReportSuccess(const QString& text);
    bool WaitForTLS();
    bool OpenActiveDataPort();
    // One row of the operations that send a single command.
    struct OneCommand {
        FinalTest test;
        const char* step;
        std::function<std::pair<QString, QString>()> commandAndText;
        std::function<bool(int)> accepts;
        QString success;
    };
    void RunOneCommandSteps(const QString& line, int code, const OneCommand& row);
    // START, PASV, NOTPASV and PORT: the data side opened before a command.
    // True when the line was one of them; then leads on to the given step.
    bool RunDataFrontSteps(const QString& line, int code, const StepCommand& next);
    void RunStatusSteps(const QString& line, int code, const StepCommand& query);
    void DropSockets(bool close);

    Globals& m_globals;
    Clock& m_clock;
    // Parent of the sockets: one dropped inside its own event is deleted later,
    // and whatever is still pending goes with the session.
    QObject m_socketOwner;
    // Counts ends of the session, so that a wait on the event loop knows when
    // the session ended beneath it.
    quint64 m_endCount = 0;
};
