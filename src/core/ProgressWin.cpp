#include "ProgressWin.h"

#include "DoEvents.h"

ProgressWin::ProgressWin(QObject* parent) : QObject(parent)
{
    connect(&CloseIt, &PushButton::Action, this, &ProgressWin::CloseIt_Action);
    connect(&ActivityLog, &TextArea::textChanged, this, &ProgressWin::ActivityLog_TextChange);
}

void ProgressWin::Show()
{
    m_visible = true;
    emit shown();
}

void ProgressWin::Close()
{
    if (!m_visible)
        return;
    m_visible = false;
    emit closed();
}

void ProgressWin::SetActivityLog(const QString& text)
{
    ActivityLog.AppendText(text + QLatin1Char('\n'));
    ActivityLog.SetScrollPosition(ActivityLog.LineOfEnd());
    Refresh();
    ActivityLog.Refresh();
    DoEvents(-1);
}

void ProgressWin::CloseIt_Action()
{
    Close();
}

void ProgressWin::ActivityLog_TextChange()
{
    // Each new line is seen to arrive, even over a selection the user made.
    ActivityLog.SetSelection(static_cast<int>(ActivityLog.Text().size()), 0);
}

bool ProgressWin::ActivityLog_KeyDown(const QString& key, Qt::KeyboardModifiers modifiers)
{
    if (!modifiers.testFlag(MenuShortcutModifier))
        return false;
    const QString k = key.toLower();
    if (k == QLatin1String("a")) {
        ActivityLog.SelectAll();
    } else if (k == QLatin1String("c") || k == QLatin1String("x")) {
        // Without a clipboard a cut would only lose the text.
        if (!m_platform || ActivityLog.SelLength() == 0)
            return true;
        CopySelection();
        if (k == QLatin1String("x"))
            ActivityLog.ReplaceSelection({});
    }
    return true;
}

bool ProgressWin::ActivityLog_MouseDown([[maybe_unused]] int x, [[maybe_unused]] int y, bool contextual)
{
    if (!contextual)
        return false;
    if (!m_platform)
        return true;
    enum { Copy, Cut, Delete };
    const bool selected = ActivityLog.SelLength() > 0;
    const int choice = m_platform->PopupMenu({{QStringLiteral("Copy"), selected},
                                              {QStringLiteral("Cut"), selected},
                                              {QStringLiteral("Delete"), selected}});
    if (!selected)
        return true;
    switch (choice) {
    case Copy:
        CopySelection();
        break;
    case Cut:
        CopySelection();
        ActivityLog.ReplaceSelection({});
        break;
    case Delete:
        ActivityLog.ReplaceSelection({});
        break;
    default:
        break;
    }
    return true;
}

void ProgressWin::CopySelection()
{
    m_platform->SetClipboardText(ActivityLog.SelText());
}
