#include "UniHelpGlobals.h"

#include "HelpPlatform.h"
#include "UniHelpEngine.h"

UniHelpGlobals::UniHelpGlobals(HelpPlatform& platform) : m_platform(platform) {}

UniHelpGlobals::~UniHelpGlobals() = default;

void UniHelpGlobals::UHError(const QString& message)
{
    // The beep comes first: the dialog waits for the user.
    m_platform.Beep();
    m_platform.CautionBox(QStringLiteral("The Help System encounted a problem."), message);
}

void UniHelpGlobals::UHViewerError(int code, const QString& description)
{
    m_platform.Beep();
    m_platform.CautionBox(QStringLiteral("The Help System's HTML Viewer encounted a problem."),
                          QStringLiteral("HTMLViewer.Error (") + QString::number(code) + QStringLiteral("): ")
                              + description);
}
