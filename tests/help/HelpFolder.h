#pragma once

#include "HelpPlatform.h"
#include "HtmlHelpView.h"
#include "UniHelpEngine.h"
#include "UniHelpGlobals.h"
#include "UniHelpViewer.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

// The desktop for help tests: records each call, shows nothing.
class ScriptedHelpPlatform final : public HelpPlatform {
public:
    void CautionBox(const QString& text, const QString& explanation) override
    {
        calls << QStringLiteral("Caution: %1 | %2").arg(text, explanation);
    }
    void Beep() override { calls << QStringLiteral("Beep"); }
    bool CreditsBox(const QString& text, const QString&) override { return (calls << "Credits: " + text).isEmpty(); }
    bool OpenDocument(const QString& path) override
    {
        calls << QStringLiteral("OpenDocument: ") + path;
        return true;
    }
    bool OpenUrl(const QString& url) override
    {
        calls << QStringLiteral("OpenUrl: ") + url;
        return true;
    }
    int HistoryMenu(const QStringList& titles, int checked) override
    {
        calls << QStringLiteral("HistoryMenu: %1 (%2)").arg(titles.join(QLatin1Char('|'))).arg(checked);
        return historyChoice;
    }
    QRect AvailableScreen() override { return {0, 0, 1600, 1000}; }

    QStringList calls;
    int historyChoice = -1;
};

// Help state whose hooks can refuse the view and count closes.
class TestHelpGlobals : public UniHelpGlobals {
public:
    using UniHelpGlobals::UniHelpGlobals;
    bool UHViewerStatus(bool available) override { return available && viewAvailable; }
    void UHClosed() override { ++closed; }
    void UHPrint(HtmlHelpView& page) override { printed << page.CurrentUrl().fileName(); }

    bool viewAvailable = true;
    int closed = 0;
    QStringList printed;
};

// A small help folder "Help" in a temporary directory; each file can be
// left out or replaced.
struct HelpFolder {
    QTemporaryDir root;
    QString path = root.filePath(QStringLiteral("Help"));

    HelpFolder()
    {
        QDir().mkpath(path);
        Write(QStringLiteral("uhtoc.xml"),
              "<helpbook><chapter name=\"Start\"><page name=\"Welcome\" source=\"VexilUtility.htm\"/></chapter>"
              "<page name=\"Other\" source=\"other.htm\"/></helpbook>");
        Write(QStringLiteral("uhindex.xml"), "<helpindex><topic name=\"Welcome\" source=\"VexilUtility.htm\"/></helpindex>");
        Write(QStringLiteral("VexilUtility.htm"), "<html><body><h1>Welcome</h1></body></html>");
        Write(QStringLiteral("other.htm"), "<html><body><h1>Other</h1></body></html>");
    }
    void Write(const QString& name, const QByteArray& text) const
    {
        QFile file(QDir(path).filePath(name));
        file.open(QIODevice::WriteOnly);
        file.write(text);
    }
    void Remove(const QString& name) const { QFile::remove(QDir(path).filePath(name)); }
    QString File(const QString& name) const { return QDir(path).filePath(name); }
};

// The one viewer on screen, or null when there is none or more than one.
inline UniHelpViewer* OpenViewer()
{
    QList<UniHelpViewer*> viewers;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* viewer = qobject_cast<UniHelpViewer*>(widget); viewer && viewer->isVisible())
            viewers << viewer;
    return viewers.size() == 1 ? viewers.first() : nullptr;
}

inline void CloseViewersNow()
{
    UniHelpEngine::CloseViewers();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
