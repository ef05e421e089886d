#pragma once

#include <QString>

class UniHelpViewer;

// One entry of the viewer's history menu: a page title and its file.
class UniHelpHistory {
public:
    UniHelpHistory(QString pageTitle, QString pageFile, bool checked = false);

    // Opens the page in `viewer`; nothing when the file is gone.
    bool Action(UniHelpViewer& viewer) const;

    QString mPageTitle;
    QString mPageFile;
    bool mChecked = false;
};
