#include "HtmlHelpView.h"

#include "HelpFileKind.h"

#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Error codes of the view, reported with a description.
constexpr int NotFound = 404;
constexpr int Unreadable = 403;
constexpr int NoPlayer = 415;

} // namespace

HtmlHelpView::HtmlHelpView(QWidget* parent) : QTextBrowser(parent)
{
    // Every navigation goes through FollowLink, so the owner can refuse it.
    setOpenLinks(false);
    setOpenExternalLinks(false);
    setTabChangesFocus(true);
    connect(this, &QTextBrowser::anchorClicked, this, &HtmlHelpView::FollowLink);
    connect(this, qOverload<const QUrl&>(&QTextBrowser::highlighted), this, [this](const QUrl& link) {
        emit StatusChanged(link.isEmpty() ? QString()
                                          : QStringLiteral("Link: \"%1\"").arg(m_current.resolved(link).toString()));
    });
}

void HtmlHelpView::LoadFile(const QString& path)
{
    const QFileInfo info(path);
    const QUrl url = QUrl::fromLocalFile(info.absoluteFilePath());
    if (!info.isFile()) {
        emit Error(NotFound, QStringLiteral("The file %1 was not found.").arg(info.fileName()));
        return;
    }
    switch (KindOfHelpFile(info.fileName())) {
    case HelpFileKind::Movie:
    case HelpFileKind::Sound:
        // Handed on, the load is over as far as this view goes; the page stays.
        if (OpenExternally && OpenExternally(info.absoluteFilePath()))
            emit DocumentComplete(url);
        else
            emit Error(NoPlayer, QStringLiteral("No program on this desktop plays %1.").arg(info.fileName()));
        return;
    case HelpFileKind::Image:
        LoadText(QStringLiteral("<p><img src=\"%1\"></p>").arg(url.fileName().toHtmlEscaped()), path);
        return;
    case HelpFileKind::Text: {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            emit Error(Unreadable, QStringLiteral("The file %1 could not be read.").arg(info.fileName()));
            return;
        }
        document()->setBaseUrl(url);
        setPlainText(QString::fromUtf8(file.readAll()));
        Finish(url);
        return;
    }
    default: {
        if (!QFile(path).open(QIODevice::ReadOnly)) {
            emit Error(Unreadable, QStringLiteral("The file %1 could not be read.").arg(info.fileName()));
            return;
        }
        setSource(url, QTextDocument::HtmlResource);
        Finish(url);
        return;
    }
    }
}

void HtmlHelpView::LoadText(const QString& html, const QString& baseFile)
{
    const QUrl base = QUrl::fromLocalFile(QFileInfo(baseFile).absoluteFilePath());
    document()->setBaseUrl(base);
    setHtml(html);
    Finish(base);
}

void HtmlHelpView::Finish(const QUrl& url)
{
    // A new page comes at its own size: the zoom is applied to it afresh.
    if (m_zoomSteps != 0)
        ScaleFonts(ZoomFactor(m_zoomSteps));
    m_current = url;
    emit DocumentComplete(url);
}

double HtmlHelpView::ZoomFactor(int steps)
{
    return std::pow(1.125, steps);
}

void HtmlHelpView::Zoom(int steps)
{
    // From a quarter smaller to twice the size.
    const int clamped = std::clamp(steps, -2, 6);
    if (clamped == m_zoomSteps)
        return;
    ScaleFonts(ZoomFactor(clamped) / ZoomFactor(m_zoomSteps));
    m_zoomSteps = clamped;
}

void HtmlHelpView::ScaleFonts(double factor)
{
    QTextDocument* page = document();
    const double plain = page->defaultFont().pointSizeF() > 0 ? page->defaultFont().pointSizeF() : font().pointSizeF();
    // Collected first: changing a format may merge the fragments being walked.
    struct Run {
        int start, length;
        QTextCharFormat format;
    };
    std::vector<Run> runs;
    for (QTextBlock block = page->begin(); block.isValid(); block = block.next())
        for (auto it = block.begin(); !it.atEnd(); ++it)
            runs.push_back({it.fragment().position(), it.fragment().length(), it.fragment().charFormat()});
    QTextCursor cursor(page);
    cursor.beginEditBlock();
    for (Run& run : runs) {
        const double size = run.format.fontPointSize() > 0 ? run.format.fontPointSize() : plain;
        run.format.setFontPointSize(size * factor);
        cursor.setPosition(run.start);
        cursor.setPosition(run.start + run.length, QTextCursor::KeepAnchor);
        cursor.setCharFormat(run.format);
    }
    cursor.endEditBlock();
}

bool HtmlHelpView::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next);
}

void HtmlHelpView::keyPressEvent(QKeyEvent* event)
{
    const bool control = event->modifiers().testFlag(Qt::ControlModifier);
    if (control && (event->key() == Qt::Key_Down || event->key() == Qt::Key_Up)) {
        QTextBrowser::focusNextPrevChild(event->key() == Qt::Key_Down);
        return;
    }
    // Ctrl+Tab leaves too, as it leaves a text field in most programs.
    if (control && (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab)) {
        QWidget::focusNextPrevChild(event->key() == Qt::Key_Tab && !event->modifiers().testFlag(Qt::ShiftModifier));
        return;
    }
    QTextBrowser::keyPressEvent(event);
}

void HtmlHelpView::FollowLink(const QUrl& link)
{
    const QUrl target = m_current.resolved(link);
    if (CancelLoad && CancelLoad(target))
        return;
    if (!target.isLocalFile())
        return;
    const QUrl page = target.adjusted(QUrl::RemoveFragment);
    if (page != m_current.adjusted(QUrl::RemoveFragment))
        LoadFile(page.toLocalFile());
    if (target.hasFragment())
        scrollToAnchor(target.fragment());
}
