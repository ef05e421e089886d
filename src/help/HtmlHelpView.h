#pragma once

#include <QTextBrowser>
#include <QUrl>

#include <functional>
#include <vector>

// The page area of the help viewer: a light offline HTML view. The program
// starts loads; a link the reader follows is offered to `CancelLoad` first.
// Sounds and movies are not played here but handed to `OpenExternally`.
class HtmlHelpView : public QTextBrowser {
    Q_OBJECT
public:
    explicit HtmlHelpView(QWidget* parent = nullptr);

    // Whether the view can be used at all; asked once when a viewer starts.
    // This one is part of the toolkit, so it always can; the application may
    // still refuse it through UniHelpGlobals.
    static bool Available() { return true; }

    void LoadFile(const QString& path);
    // Shows `html`; its relative links and pictures resolve against `baseFile`.
    void LoadText(const QString& html, const QString& baseFile);
    // The file shown, or the base of the text shown.
    QUrl CurrentUrl() const { return m_current; }

    // Before the view follows a link: true keeps it from navigating.
    std::function<bool(const QUrl& url)> CancelLoad;
    // A sound or a movie; false when nothing on the desktop plays it.
    std::function<bool(const QString& path)> OpenExternally;

signals:
    // A load has finished, whoever started it.
    void DocumentComplete(const QUrl& url);
    // The text of the status line; over a link it holds the link's URL in double quotes.
    void StatusChanged(const QString& text);
    void Error(int code, const QString& description);

public:
    // Page zoom, as browsers have it: steps of one eighth, kept for every page
    // shown until the view closes; 0 is the page's own size.
    void Zoom(int steps);
    int ZoomSteps() const { return m_zoomSteps; }

protected:
    // Tab and Shift+Tab move between the window's controls, never round the
    // page's links; Ctrl+Down and Ctrl+Up step through the links instead.
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void FollowLink(const QUrl& link);
    void Finish(const QUrl& url);
    void NotePageSizes();
    void ApplyZoom();

    struct Run {
        int start, length;
        double size; // 0: the view's own font size
    };
    std::vector<Run> m_runs;
    QUrl m_current;
    int m_zoomSteps = 0;
};
