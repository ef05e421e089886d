#pragma once

class Label;
class PushButton;
class TextArea;
class ProgressBar;
class QLabel;
class QPushButton;
class QPlainTextEdit;
class QProgressBar;

// Ties a widget to the control model it draws: model changes update the
// widget, user actions go back to the model. The widget owns the connections.
void BindLabel(QLabel* widget, Label& model);
void BindButton(QPushButton* widget, PushButton& model);
void BindTextArea(QPlainTextEdit* widget, TextArea& model);
void BindProgressBar(QProgressBar* widget, ProgressBar& model);
