#include "QtPlatformServices.h"

#include "AboutWindow.h"
#include "DoEvents.h"
#include "InitWin.h"
#include "MessageWindow.h"
#include "MyMsgBoxWin.h"
#include "MyYesWindow.h"
#include "OSXVersionInfo.h"

#include <QApplication>
#include <QClipboard>
#include <QCursor>
#include <QFileDialog>
#include <QMenu>
#include <QMimeDatabase>
#include <QProcess>
#include <QStorageInfo>
#include <QDesktopServices>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QUrl>

QtPlatformServices::~QtPlatformServices()
{
    delete m_initWin;
    delete m_msgBox;
    delete m_yesWindow;
    delete m_about;
}

void QtPlatformServices::MsgBox(const QString& text)
{
    QMessageBox box(QMessageBox::NoIcon, QStringLiteral("Vexil Utility"), text, QMessageBox::Ok);
    box.exec();
}

void QtPlatformServices::Beep()
{
    QApplication::beep();
}

void QtPlatformServices::MyMsgBox(const QString& text)
{
    if (!m_msgBox)
        m_msgBox = new MyMsgBoxWin;
    m_msgBox->MyMsgBoxText->setText(text);
    m_msgBox->FitText();
    m_msgBox->show();
    m_msgBox->raise();
}

bool QtPlatformServices::MyYesWindow(const QString& text, const QString& text2, const QString& cancelCaption)
{
    if (!m_yesWindow)
        m_yesWindow = new ::MyYesWindow;
    return m_yesWindow->Ask(text, text2, cancelCaption);
}

void QtPlatformServices::ShowMessageWindow(const std::function<void()>& viewReleaseNotes)
{
    MessageWindow window(viewReleaseNotes);
    window.exec();
}

void QtPlatformServices::ShowAboutWindow(const QString& revisionText)
{
    // One about box: asked again, the open one comes to the front.
    if (!m_about) {
        m_about = new AboutWindow(revisionText);
        m_about->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_about->show();
    m_about->raise();
    m_about->activateWindow();
}

void QtPlatformServices::ShowInitWin(int left, const QString& text)
{
    if (!m_initWin)
        m_initWin = new InitWin;
    m_initWin->StaticText1->setText(text);
    m_initWin->move(left, m_initWin->y());
    m_initWin->show();
    DoEvents(-1);
}

void QtPlatformServices::CloseInitWin()
{
    if (m_initWin)
        m_initWin->close();
}

bool QtPlatformServices::OpenDocument(const QString& path)
{
    // The desktop's opener starts, and succeeds, whether or not any program
    // takes the file's type; so ask the desktop first whether one does.
    QProcess query;
    query.start(QStringLiteral("xdg-mime"),
                {QStringLiteral("query"), QStringLiteral("default"), QMimeDatabase().mimeTypeForFile(path).name()});
    if (query.waitForFinished(3000) && query.exitStatus() == QProcess::NormalExit
        && query.readAllStandardOutput().trimmed().isEmpty())
        return false;
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

bool QtPlatformServices::OpenURL(const QUrl& url)
{
    return QDesktopServices::openUrl(url);
}

OSVersionRecord QtPlatformServices::OSVersion()
{
    return OSXVersionInfo::OSVersion();
}

QRect QtPlatformServices::AvailableScreen()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
}

QList<QRect> QtPlatformServices::ScreenGeometries()
{
    QList<QRect> areas;
    for (const QScreen* screen : QGuiApplication::screens())
        areas << screen->geometry();
    return areas;
}

QString QtPlatformServices::ChooseFolder(const QString& title, const QString& actionCaption, const QString& initialFolder)
{
    QFileDialog chooser(nullptr, title, initialFolder);
    chooser.setFileMode(QFileDialog::Directory);
    chooser.setOption(QFileDialog::ShowDirsOnly);
    chooser.setLabelText(QFileDialog::Accept, actionCaption);
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty())
        return {};
    return chooser.selectedFiles().constFirst();
}

QString QtPlatformServices::ChooseFile(const QString& title, const QString& initialFolder, const QString& filter)
{
    return QFileDialog::getOpenFileName(nullptr, title, initialFolder, filter);
}

QStringList QtPlatformServices::MountedVolumes()
{
    QStringList roots;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes())
        if (volume.isValid() && volume.isReady())
            roots << volume.rootPath();
    return roots;
}

QString QtPlatformServices::ClipboardText()
{
    return QGuiApplication::clipboard()->text();
}

void QtPlatformServices::SetClipboardText(const QString& text)
{
    QGuiApplication::clipboard()->setText(text);
}

int QtPlatformServices::PopupMenu(const std::vector<PopupItem>& items)
{
    QMenu menu;
    std::vector<QAction*> actions;
    for (const PopupItem& item : items) {
        if (item.text == QLatin1String("-")) {
            actions.push_back(menu.addSeparator());
            continue;
        }
        QAction* action = menu.addAction(item.text);
        action->setEnabled(item.enabled);
        actions.push_back(action);
    }
    QAction* chosen = menu.exec(QCursor::pos());
    for (std::size_t i = 0; i < actions.size(); ++i)
        if (actions[i] == chosen)
            return static_cast<int>(i);
    return -1;
}

void QtPlatformServices::Quit(int exitCode)
{
    // Closing the windows first lets the main window save its state on the way out.
    QApplication::closeAllWindows();
    QCoreApplication::exit(exitCode);
}

void QtPlatformServices::CautionBox(const QString& text, const QString& explanation)
{
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Vexil Utility"), text, QMessageBox::Ok);
    box.setInformativeText(explanation);
    box.exec();
}

bool QtPlatformServices::CreditsBox(const QString& text, const QString& explanation)
{
    QMessageBox box(QMessageBox::Information, QStringLiteral("Vexil Utility"), text, QMessageBox::Ok | QMessageBox::Cancel);
    box.setInformativeText(explanation);
    return box.exec() == QMessageBox::Ok;
}

bool QtPlatformServices::OpenUrl(const QString& url)
{
    return QDesktopServices::openUrl(QUrl(url));
}

int QtPlatformServices::HistoryMenu(const QStringList& titles, int checked)
{
    QMenu menu;
    for (int i = 0; i < titles.size(); ++i) {
        QAction* action = menu.addAction(titles.at(i));
        action->setData(i);
        action->setCheckable(i == checked);
        action->setChecked(i == checked);
    }
    const QAction* chosen = menu.exec(QCursor::pos());
    return chosen ? chosen->data().toInt() : -1;
}
