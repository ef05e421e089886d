#pragma once

#include <QString>
#include <QtCore/qnamespace.h>

#include <functional>

class Label;
class MenuItem;
class QAction;
class PushButton;
class TextArea;
class TextField;
class QLineEdit;
class ProgressBar;
class QLabel;
class QPushButton;
class QPlainTextEdit;
class QProgressBar;
class QString;

// A controller's handlers for the user's keys and clicks in a text area. Each
// returns true when it used the event up, so that the widget must not act on it.
struct TextAreaEvents {
    std::function<bool(const QString& key, Qt::KeyboardModifiers modifiers)> keyDown;
    // x and y in the text's viewport; contextual for a right click or the menu key.
    std::function<bool(int x, int y, bool contextual)> mouseDown;
};

// Ties a widget to the control model it draws: model changes update the
// widget, user actions go back to the model. The widget owns the connections.
void BindLabel(QLabel* widget, Label& model);
void BindButton(QPushButton* widget, PushButton& model);
// The text and the selection follow the model; the user's selection goes back to it.
void BindTextArea(QPlainTextEdit* widget, TextArea& model, TextAreaEvents events = {});
void BindTextField(QLineEdit* widget, TextField& model);
void BindProgressBar(QProgressBar* widget, ProgressBar& model);
// The action's text, enabled state and check mark follow the item; choosing
// the action is the item's Action. Only a checkable action shows the mark.
// `shown` is the item's text as the menu draws it (with its "&" mnemonic); empty: the item's own.
void BindMenuItem(QAction* action, MenuItem& item, const QString& shown = QString());
// `text` with "&" before the first letter, preferring a word's first, that no
// earlier call with the same `used` took; the letter goes into `used`.
QString WithMnemonic(const QString& text, QString& used);
// A screen reader reads a value label with its caption ("Available: 01.12"),
// not as a bare number, whatever text the value shows.
void NameAfterCaption(QLabel* value, Label& model, const QLabel* caption);
