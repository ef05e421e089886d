#pragma once

#include <QFileInfo>
#include <QIcon>
#include <QString>

class QObject;
class UniHelpGlobals;
class UniHelpViewer;

// The application's way into the help: the settings of the help system and
// the two Run operations, each of which replaces any open viewer.
class UniHelpEngine {
public:
    // `appHelpFolder` is the folder the application found; `scriptObject`
    // receives the scripts of "UHScript:" links.
    UniHelpEngine(UniHelpGlobals& globals, const QString& appHelpFolder, QObject* scriptObject = nullptr);
    virtual ~UniHelpEngine() = default;

    // Opens a new viewer on `page`; an empty QFileInfo means the start page.
    virtual void Run(const QFileInfo& page);
    // Opens a new viewer on the search tab with the search done for `term`.
    virtual void Run(const QString& term);
    // Hook for "UHScript:" links; the text arrives decoded.
    virtual void RunScript(const QString& script);
    // Unpacks a single-file volume into a new temporary help folder.
    virtual void VVInitialize(const QString& path);
    // Copies one file or folder tree of the volume to `target`.
    virtual void VVExtract(const QFileInfo& source, const QFileInfo& target);

    // Left null, each is the style's standard picture when a viewer opens.
    QIcon IconCategory;
    QIcon IconCategoryOpen;
    QIcon IconPage;
    QString FontName;
    QString AltFont;
    QString PrintSettings;
    QObject* ScriptObject = nullptr;
    QString HomePage;
    QString HelpTitle;
    QString HelpFolder;              // empty: no help folder
    bool UseVirtualVolume = false;
    bool AutoSet = true;
    bool UseFullTextSearch = true;
    bool ShowSearchHighlights = true;
    bool ShowPrintButton = true;
    int FontSize = 11;

    // Closes every open viewer window of the application.
    static void CloseViewers();

private:
    UniHelpViewer* StartViewer();
    void PlaceViewer(UniHelpViewer& viewer) const;

    UniHelpGlobals& m_globals;
};
