#pragma once

#include "FTPCommandSocket.h"
#include "FTPConnectionTimer.h"
#include "FTPDataSocket.h"
#include "FTPDirList.h"
#include "FTPDirectoryClass.h"
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
#include <vector>

class Clock;
class Globals;

// The step names of a data front, and the prefix of its status texts.
struct FTPDataFrontSteps {
    const char* pasv = "PASV";
    const char* notpasv = "NOTPASV";
    const char* port = "PORT";
    const char* text = "";
};

// One FTP session: one control connection, one data connection, one inactivity
// timer and one status sink. Nothing blocks: an operation sends its first
// command and returns; each final reply line then moves its step machine one
// step, and the end is told only through FTPStatusInstance.
//
// The owner may delete or replace the session inside any of its reports (each
// report gives the event loop a pass): every path that can pump events checks
// that the session still lives before it touches it again, and the sockets and
// the timer go by deleteLater.
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
    // Why the control connection could not be made: an FTPSocketError number,
    // or kTimedOut when the session's time-out came first; 0 once it was made.
    int ConnectFailure() const;
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
    void GetSingleFile();
    void RestartGetSingleFile();
    void PutSingleFile();
    void RestartPutSingleFile();
    void GetDirList();
    void StartGetDirList();

    // Sequences over lists of files and whole directory trees: the Start...
    // forms connect and log on for themselves and end with QUIT, the others
    // run on a logged-on session and leave it open.
    void StartGetFile() { StartSequence("GetFile", "CONNECT", "Start Get File Sequence"); }
    void StartPutFile() { StartSequence("PutFile", "CONNECT", "Start Put File Sequence"); }
    void StartDeleteFile() { StartSequence("DeleteFile", "CONNECT", "Start Delete File Sequence"); }
    void StartRenameFile() { StartSequence("RenameFile", "CONNECT", "Start Rename File Sequence"); }
    void StartGetDir();
    void StartPutDir();
    void StartDeleteDir();
    void GetDir();
    void PutDir();
    void DeleteDir();
    // Appends the local tree at path to the upload list (Files, Paths); false
    // when the path is missing (the session is ended) or the session went away.
    bool GetFiles(const QString& prefix, const QString& path);
    // Parts of a path are separated by FileDelimiter or by "/".
    QString GetDirFromPath(const QString& path) const { return path.left(PathCut(path)); }
    QString GetFileFromPath(const QString& path) const { return path.mid(PathCut(path)); }
    QString UpOneLocalDirectory(const QString& path) const;
    // The index in DirList of the directory whose Name is path, -1 if none.
    int GetCurrentDirectoryIndex(const QString& path) const;

    // Local files: only plain names inside LocalDirectory are touched.
    void DeleteLocalFile(const QString& name);
    void DeleteLocalFile(const QFileInfo& item);

    // Listing lines.
    static FTPParsedDirListLineClass ParseDirListLine(const QString& line) { return ::ParseDirListLine(line); }
    static QString Squeeze(const QString& text, const QString& charSet) { return ::Squeeze(text, charSet); }

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
    void ExecuteGetSingleFileSteps(const QString& line, int code);
    void ExecuteRestartGetSingleFileSteps(const QString& line, int code);
    void ExecutePutSingleFileSteps(const QString& line, int code);
    void ExecuteRestartPutSingleFileSteps(const QString& line, int code);
    void ExecuteGetDirListSteps(const QString& line, int code);
    void ExecuteGetDirListImmediateSteps(const QString& line, int code);
    void ExecuteGetFileSteps(const QString& line, int code);
    void ExecutePutFileSteps(const QString& line, int code);
    void ExecuteDeleteFileSteps(const QString& line, int code);
    void ExecuteRenameFileSteps(const QString& line, int code);
    void ExecuteGetDirSteps(const QString& line, int code) { RunTreeWalk(line, code, false, true); }
    void ExecuteGetDirImmediateSteps(const QString& line, int code) { RunTreeWalk(line, code, false, false); }
    void ExecuteDeleteDirSteps(const QString& line, int code) { RunTreeWalk(line, code, true, true); }
    void ExecuteDeleteDirImmediateSteps(const QString& line, int code) { RunTreeWalk(line, code, true, false); }
    void ExecutePutDirSteps(const QString& line, int code);
    void ExecutePutDirImmediateSteps(const QString& line, int code);

    // Events of the control connection, forwarded by the socket.
    void CommandDataAvailable(FTPCommandSocket* socket);
    void CommandSocketError(FTPCommandSocket* socket, int code);
    // Appends received bytes to Buffer and handles every complete line, with a
    // pass of the event loop after each.
    void ReceiveControlBytes(const QByteArray& bytes, FTPCommandSocket* from = nullptr);

    // The text of listing bytes, in the server's encoding.
    QString Decode(const QByteArray& bytes) const;
    // Expires when the session is deleted: whoever pumps events checks it after.
    std::weak_ptr<int> Alive() const { return m_life; }

private:
    struct StepCommand {
        QString step;
        QString command;
        QString statusText;
    };
    enum class FinalTest { A, B };
    // The codes that move a step on: one or two, kAnyCode, or kAny2xx.
    static constexpr int kAnyCode = -1;
    static constexpr int kAny2xx = -2;
    struct Codes {
        int first;
        int second = -3;
        Codes(int code) : first(code) {}
        Codes(int a, int b) : first(a), second(b) {}
        bool Accepts(int code) const;
    };
    // One row of a step machine: the step, the codes it expects, the action.
    struct StepRow {
        const char* step;
        Codes codes;
        std::function<void()> action;
    };
    using StepRows = std::vector<StepRow>;
    friend StepRows operator+(StepRows a, const StepRows& b)
    {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    }
    // Drops a line that is not final, then runs the first row of the current
    // step that accepts the code; a known step with another code, or an
    // unknown step, ends the session.
    void RunSteps(const QString& line, int code, FinalTest test, const StepRows& rows);

    using DataFrontSteps = FTPDataFrontSteps;

    // The families that repeat.
    // PASV or NOTPASV, by PassiveMode (the START row of the data front).
    void EnterDataFront(const DataFrontSteps& steps = {});
    // PASV, NOTPASV and PORT: the data side opened, then on to next.
    StepRows DataFront(const QString& line, const StepCommand& next);
    StepRows DataFront(const QString& line, std::function<void()> onward, const DataFrontSteps& steps = {});
    // The log-on of a self-connecting sequence, then CWD ServerDirectory (in a
    // step of the given name) when one is set, then then.
    StepRows LogonPrefix(const QString& line, std::function<void()> then, const char* cwdStep = "CWD");
    // The wait for the data close: the step repeats with a real NOOP until
    // the data side has closed, then done runs.
    StepRow DataEnd(const char* step, const QString& statusText, std::function<void()> done);
    // CONNECT, AUTH, PBSZ, PROT and USER of a log-on; USER accepts userCodes.
    StepRows LogonFront(const QString& line, Codes userCodes);
    // Any final reply to QUIT: the rest of the control bytes, then the end.
    StepRow QuitEnd(const QString& text);
    // PASV to LISTEND of a listing, then done.
    StepRows ListingWalk(const QString& line, std::function<void()> done);
    // The receiving walk from TYPE on; restart sends REST before RETR. After
    // the file is complete, done runs, or else success is reported.
    StepRows ReceiveWalk(bool restart, std::function<void()> done = {});
    // TYPE, DELETEFILE and DELE of a delete behind its data front.
    StepRows DeleteWalk(const QString& line);
    // The sending walk; restart asks SIZE and sends REST before STOR.
    StepRows SendWalk(const QString& line, bool restart);
    // The end of a received file: the temporary file renamed over the target;
    // false when that failed and the session has been ended.
    bool CommitReceived();
    // The entry of a Start... sequence; prepare runs before the connection is
    // made and may stop it.
    void StartSequence(const QString& type, const QString& step, const QString& text,
                       const std::function<bool()>& prepare = {});
    // The log-on of a list sequence, then its LOOP into the data front.
    StepRows ListFront(const QString& line);
    // The next file of a list sequence, or QUIT when none is left.
    void LoopOrQuit();
    // The tree walk from the top directory's data front on; done runs when the
    // whole tree has been walked (and, deleting, its top removed).
    StepRows TreeWalk(const QString& line, bool deleting, std::function<void()> done);
    // The upload walk from GETFILES on; done runs after the last element.
    StepRows UploadWalk(const QString& line, std::function<void()> done);
    // A walk starts afresh at ServerDirectory.
    void ResetWalk();
    void RunTreeWalk(const QString& line, int code, bool deleting, bool connecting);
    // DirList's entry for CurrentWorkingDirectory, its index made current; ends
    // the session with oops and the directory when there is none.
    FTPDirectoryClass* WalkedDirectory(const char* oops);
    // Enters the local folder for the server directory sub; false (nothing
    // made) for a name that is not a plain one.
    bool EnterLocalFolder(const QString& sub);
    bool CollectUploadList();
    qsizetype PathCut(const QString& path) const;
    QString ListCommand() const;

    void Construct();
    // Drops earlier sockets, makes new ones and connects (Logon, Start...).
    void OpenConnection();
    // The entry of an operation on a logged-on session: nothing when the
    // connection is gone, else the type is set and the machine enters START.
    bool EnterOperation(const QString& type);
    void StartOperation(const QString& type, const QString& entryText);
    void ReportEnd(const QString& text);
    bool AtStep(const char* step) const;
    void Dispatch(const QString& line, int code);
    void UnexpectedReply(const QString& line);
    void UnknownStep();
    void StopTimer();
    void ReportSuccess(const QString& text);
    bool WaitForTLS();
    bool OpenActiveDataPort();
    void DropSockets(bool close);

    Globals& m_globals;
    Clock& m_clock;
    std::shared_ptr<int> m_life = std::make_shared<int>(0);
    // Counts ends of the session, so that a wait on the event loop knows when
    // the session ended beneath it.
    quint64 m_endCount = 0;
    bool m_controlConnected = false;
    int m_connectError = 0;
    // A transfer's preliminary reply came and its final reply has not: the
    // server still owes it. An operation that ends meanwhile leaves that reply
    // to come late, and it must not pass for the answer to the next command.
    bool m_finalOwed = false;
    bool m_lateReplyOwed = false;
    bool m_localStep = false;
};
