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
    NotePageSizes();
    if (m_zoomSteps != 0)
        ApplyZoom();
    m_current = url;
    emit DocumentComplete(url);
}

void HtmlHelpView::Zoom(int steps)
{
    // From a quarter smaller to twice the size.
    const int clamped = std::clamp(steps, -2, 6);
    if (clamped == m_zoomSteps)
        return;
    m_zoomSteps = clamped;
    ApplyZoom();
}

void HtmlHelpView::NotePageSizes()
{
    // The page's own sizes, so that every zoom is taken from them and 0 gives them back exactly.
    m_runs.clear();
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
        for (auto it = block.begin(); !it.atEnd(); ++it)
            m_runs.push_back({it.fragment().position(), it.fragment().length(), it.fragment().charFormat().fontPointSize()});
}

void HtmlHelpView::ApplyZoom()
{
    const double factor = std::pow(1.125, m_zoomSteps);
    const double plain = font().pointSizeF();
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    for (const Run& run : m_runs) {
        cursor.setPosition(run.start);
        cursor.setPosition(run.start + run.length, QTextCursor::KeepAnchor);
        QTextCharFormat format;
        format.setFontPointSize((run.size > 0 ? run.size : plain) * factor);
        if (m_zoomSteps == 0 && run.size <= 0) {
            QTextCharFormat own = cursor.charFormat();
            own.clearProperty(QTextFormat::FontPointSize);
            cursor.setCharFormat(own);
        } else {
            cursor.mergeCharFormat(format);
        }
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
