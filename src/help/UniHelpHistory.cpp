#include "UniHelpHistory.h"

#include "UniHelpViewer.h"

#include <QFileInfo>

UniHelpHistory::UniHelpHistory(QString pageTitle, QString pageFile, bool checked)
    : mPageTitle(std::move(pageTitle)), mPageFile(std::move(pageFile)), mChecked(checked)
{
}

bool UniHelpHistory::Action(UniHelpViewer& viewer) const
{
    if (mPageFile.isEmpty() || !QFileInfo::exists(mPageFile))
        return true;
    viewer.LoadHistoryTopic(mPageTitle, mPageFile);
    return true;
}
