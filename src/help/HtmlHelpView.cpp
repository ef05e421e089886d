#include "HtmlHelpView.h"

#include "HelpFileKind.h"

#include <QFile>
#include <QFileInfo>
#include <QTextDocument>

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
    m_current = url;
    emit DocumentComplete(url);
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
