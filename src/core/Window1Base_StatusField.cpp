#include "Window1Base.h"

namespace {

enum StatusMenu { Cut, Copy, Paste, Delete, Separator, SelectAll, UndoSeparator, Undo, Redo };

} // namespace

void Window1Base::StatusField_Open()
{
    StatusField.SetVerticalScrollBar(false);
}

void Window1Base::StatusField_TextChange()
{
    // A new line must be seen to arrive, even over a selection the user made.
    StatusField.SetSelection(static_cast<int>(StatusField.Text().size()), 0);
}

bool Window1Base::StatusField_KeyDown(const QString& key, Qt::KeyboardModifiers modifiers)
{
    if (!modifiers.testFlag(MenuShortcutModifier))
        return false;
    const QString k = key.toLower();
    if (k == QLatin1String("a")) {
        StatusField.SelectAll();
    } else if (k == QLatin1String("c")) {
        m_platform.SetClipboardText(StatusField.SelText());
    } else if (k == QLatin1String("x")) {
        m_platform.SetClipboardText(StatusField.SelText());
        StatusField.ReplaceSelection({});
    } else if (k == QLatin1String("v")) {
        StatusField.ReplaceSelection(m_platform.ClipboardText());
    } else if (k == QLatin1String("z")) {
        // A slip (select all, then paste) must not cost the log its history.
        modifiers.testFlag(Qt::ShiftModifier) ? StatusField.Redo() : StatusField.Undo();
    }
    // Every other shortcut is used up too, so that none reaches the read-only field.
    return true;
}

bool Window1Base::StatusField_MouseDown([[maybe_unused]] int x, [[maybe_unused]] int y, bool contextual)
{
    if (!contextual)
        return false;
    StatusField.RequestFocus();
    const bool selected = StatusField.SelLength() > 0;
    const std::vector<PlatformServices::PopupItem> items{
        {QStringLiteral("Cut"), selected},
        {QStringLiteral("Copy"), selected},
        {QStringLiteral("Paste"), !m_platform.ClipboardText().isEmpty()},
        {QStringLiteral("Delete"), selected},
        {QStringLiteral("-"), true},
        {QStringLiteral("Select All"), !StatusField.Text().isEmpty()},
        {QStringLiteral("-"), true},
        {QStringLiteral("Undo"), StatusField.CanUndo()},
        {QStringLiteral("Redo"), StatusField.CanRedo()},
    };
    const int choice = m_platform.PopupMenu(items);
    if (choice < 0 || choice >= static_cast<int>(items.size()) || !items[choice].enabled)
        return true;
    switch (choice) {
    case Cut:
        m_platform.SetClipboardText(StatusField.SelText());
        StatusField.ReplaceSelection({});
        break;
    case Copy:
        m_platform.SetClipboardText(StatusField.SelText());
        break;
    case Paste:
        StatusField.ReplaceSelection(m_platform.ClipboardText());
        break;
    case Delete:
        StatusField.ReplaceSelection({});
        break;
    case SelectAll:
        StatusField.SelectAll();
        break;
    case Undo:
        StatusField.Undo();
        break;
    case Redo:
        StatusField.Redo();
        break;
    default:
        break;
    }
    return true;
}
