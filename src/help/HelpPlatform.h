#pragma once

#include <QRect>
#include <QString>
#include <QStringList>

// What the help system needs of the desktop. The application implements it
// with real dialogs; tests script it, so no test blocks on a modal window.
class HelpPlatform {
public:
    virtual ~HelpPlatform() = default;

    // A modal caution dialog with one button; returns once the user closed it.
    virtual void CautionBox(const QString& text, const QString& explanation) = 0;
    virtual void Beep() = 0;
    // A modal message with an action and a cancel button; true for the action.
    virtual bool CreditsBox(const QString& text, const QString& explanation) = 0;
    // Hands a local file (a sound, a movie) to the desktop's player without
    // waiting for it; false when no program takes it.
    virtual bool OpenDocument(const QString& path) = 0;
    // An address outside the manual (web, mail, ftp) in the desktop's handler.
    virtual bool OpenUrl(const QString& url) = 0;
    // A pop-up menu of page titles at the pointer, `checked` marked; the
    // index of the chosen title, or -1 when it closed without a choice.
    virtual int HistoryMenu(const QStringList& titles, int checked) = 0;
    // The main screen's area for windows, in screen coordinates.
    virtual QRect AvailableScreen() = 0;
};
