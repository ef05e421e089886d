#include "AboutWindow.h"
#include "MessageWindow.h"
#include "MyYesWindow.h"
#include "QtPlatformServices.h"
#include "QtPrinters.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Runs `act` on the modal dialog once it is up, from inside its own event loop.
void WhenModal(std::function<void(QWidget*)> act)
{
    QTimer::singleShot(0, [act = std::move(act)] {
        QWidget* dialog = QApplication::activeModalWidget();
        ASSERT_TRUE(dialog);
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
        act(dialog);
    });
}

void Key(QWidget* dialog, Qt::Key key)
{
    QWidget* target = QApplication::focusWidget() ? QApplication::focusWidget() : dialog;
    QTest::keyClick(target, key);
}

} // namespace

TEST(Dialogs, YesWindowAnswersNoFromTheKeyboardAndResetsEachTime)
{
    QtPlatformServices platform;
    struct Row {
        const char* name;
        std::function<void(QWidget*)> act;
        bool answer;
    };
    const Row rows[] = {
        {"Return", [](QWidget* d) { Key(d, Qt::Key_Return); }, false},
        {"Yes button", [](QWidget* d) { static_cast<MyYesWindow*>(d)->YesButton->click(); }, true},
        {"Escape", [](QWidget* d) { Key(d, Qt::Key_Escape); }, false},
        {"Cancel button", [](QWidget* d) { static_cast<MyYesWindow*>(d)->CancelButton->click(); }, false},
        {"closed", [](QWidget* d) { d->close(); }, false},
    };
    for (const Row& row : rows) {
        QString focused;
        QString caption;
        WhenModal([&row, &focused, &caption](QWidget* d) {
            auto* yes = static_cast<MyYesWindow*>(d);
            if (auto* button = qobject_cast<QPushButton*>(QApplication::focusWidget()))
                focused = button->text();
            caption = yes->CancelButton->text();
            EXPECT_EQ(yes->LabelText->text(), "Firmware load is complete.");
            row.act(d);
        });
        EXPECT_EQ(platform.MyYesWindow(QStringLiteral("Firmware load is complete."), QStringLiteral("Quit now?"), QStringLiteral("No")),
                  row.answer)
            << row.name;
        EXPECT_EQ(focused, "No") << row.name << ": the focus starts on the cancelling button";
        EXPECT_EQ(caption, "No");
    }
}

TEST(Dialogs, MessageBoxWindowReturnsAtOnce)
{
    QtPlatformServices platform;
    platform.MyMsgBox(QStringLiteral("Invalid Path!"));
    QWidget* shown = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && w->findChild<QLabel*>() && w->size() == QSize(382, 137))
            shown = w;
    ASSERT_TRUE(shown) << "MyMsgBox returned with its window still up";
    QLabel* text = nullptr;
    for (QLabel* label : shown->findChildren<QLabel*>())
        if (label->text() == "Invalid Path!")
            text = label;
    EXPECT_TRUE(text);
    auto* ok = shown->findChild<QPushButton*>();
    ASSERT_TRUE(ok);
    EXPECT_EQ(ok->text(), "OK");
    ok->click();
    EXPECT_FALSE(shown->isVisible());
}

TEST(Dialogs, NoticeStaysOpenWhileTheNotesAreViewed)
{
    int viewed = 0;
    MessageWindow notice([&viewed] { ++viewed; });
    EXPECT_EQ(notice.windowTitle(), "Vexil New Firmware");
    notice.show();
    notice.PushButton1->click();
    EXPECT_EQ(viewed, 1);
    EXPECT_TRUE(notice.isVisible());
    notice.PushButton2->click();
    EXPECT_FALSE(notice.isVisible());
}

TEST(Dialogs, AboutBoxClosesOnAClickAnywhere)
{
    for (const bool onLabel : {false, true}) {
        AboutWindow about(QStringLiteral("Revision 1.2.3"));
        EXPECT_EQ(about.StaticText2->text(), "Revision 1.2.3");
        about.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&about));
        if (onLabel)
            QTest::mouseClick(about.StaticText2, Qt::LeftButton);
        else
            QTest::mouseClick(&about, Qt::LeftButton, {}, QPoint(10, 190));
        EXPECT_FALSE(about.isVisible()) << (onLabel ? "label" : "background");
    }
}
