#include "Window1Base.h"

#include <algorithm>

Window1Base::Window1Base(Globals& globals, Clock& clock, PlatformServices& platform, QObject* parent)
    : QObject(parent), m_globals(globals), m_clock(clock), m_platform(platform)
{
    m_globals.AttachSink(this);
    connect(&StatusField, &TextArea::textChanged, this, &Window1Base::StatusField_TextChange);
    // The control opens with its window.
    StatusField_Open();
}

Window1Base::~Window1Base()
{
    m_globals.AttachSink(nullptr);
}

void Window1Base::UpdateTimeStamp()
{
    const QString sql = m_clock.LocalDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    m_globals.mTIMESTAMP = sql.right(8) + QLatin1Char(' ');
}

void Window1Base::StatusPosted(const QString& text, bool shown)
{
    Q_UNUSED(text);
    UpdateTimeStamp();
    if (shown)
        SetStatus();
}

void Window1Base::SetStatus()
{
    UpdateTimeStamp();
    StatusField.AppendText(m_globals.mTIMESTAMP + m_globals.m_StatusMsg + QLatin1Char('\n'));
    // Eight lines back from the end keeps the newest lines in view; the model
    // clamps a short log's negative target to the top.
    StatusField.SetScrollPosition(StatusField.LineOfEnd() - 8);
    StatusField.Refresh();
}

ProgressWin& Window1Base::GetProgressWin()
{
    if (!m_progressWin) {
        // Parented to the window so that a closed one still awaiting deletion dies with it.
        m_progressWin = new ProgressWin(this);
        m_progressWin->SetPlatform(&m_platform);
        ProgressWin* created = m_progressWin;
        connect(created, &ProgressWin::closed, this, [this, created] {
            if (m_progressWin == created)
                m_progressWin = nullptr;
            created->deleteLater();
        });
        emit progressWinCreated(created);
    }
    return *m_progressWin;
}
