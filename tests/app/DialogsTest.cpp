#include "AboutWindow.h"
#include "MessageWindow.h"
#include "MyMsgBoxWin.h"
#include "MyYesWindow.h"
#include "QtPlatformServices.h"
#include "QtPrinters.h"

#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

#include <functional>

TEST(Dialogs, YesWindowAnswersFromTheKeyboardWithTheFocusOnNoEachTime)
{
    QtPlatformServices platform;
    auto key = [](Qt::Key k) { QTest::keyClick(QApplication::focusWidget(), k); };
    const std::tuple<const char*, std::function<void(MyYesWindow*)>, bool> rows[] = {
        {"Return", [&](MyYesWindow*) { key(Qt::Key_Return); }, false},
        {"Return on Yes", [&](MyYesWindow* d) { d->YesButton->setFocus(); key(Qt::Key_Return); }, true},
        {"Escape", [&](MyYesWindow*) { key(Qt::Key_Escape); }, false},
        {"Yes button", [](MyYesWindow* d) { d->YesButton->click(); }, true},
    };
    for (const auto& [name, act, answer] : rows) {
        QString focused, text;
        // Runs on the modal dialog once it is up, from inside its own event loop.
        QTimer::singleShot(0, [&, act = act] {
            auto* dialog = qobject_cast<MyYesWindow*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog && QTest::qWaitForWindowActive(dialog));
            auto* button = qobject_cast<QPushButton*>(QApplication::focusWidget());
            focused = button ? button->text() : QString();
            text = dialog->LabelText->text();
            act(dialog);
        });
        EXPECT_EQ(platform.MyYesWindow(QStringLiteral("Firmware load is complete."), QStringLiteral("Quit now?"), QStringLiteral("No")), answer)
            << name;
        EXPECT_EQ(std::pair(focused, text), std::pair(QStringLiteral("No"), QStringLiteral("Firmware load is complete.")))
            << name << ": the focus starts on the cancelling button, captioned as asked";
    }
}

TEST(Dialogs, MessageBoxReturnsAtOnceNoticeStaysWhileTheNotesAreViewedAboutBoxClosesOnAClickAnywhere)
{
    QtPlatformServices platform;
    platform.MyMsgBox(QStringLiteral("Invalid Path!"));
    MyMsgBoxWin* shown = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        shown = w->isVisible() && qobject_cast<MyMsgBoxWin*>(w) ? static_cast<MyMsgBoxWin*>(w) : shown;
    ASSERT_TRUE(shown) << "MyMsgBox returned with its window still up";
    EXPECT_EQ(std::pair(shown->MyMsgBoxText->text(), shown->PushButton1->text()), std::pair(QStringLiteral("Invalid Path!"), QStringLiteral("OK")));
    shown->PushButton1->click();
    EXPECT_FALSE(shown->isVisible());

    int viewed = 0;
    MessageWindow notice([&viewed] { ++viewed; });
    EXPECT_EQ(notice.windowTitle(), "Vexil New Firmware");
    notice.show();
    notice.PushButton1->click();
    EXPECT_TRUE(viewed == 1 && notice.isVisible());
    notice.PushButton2->click();
    EXPECT_FALSE(notice.isVisible());

    for (const bool onLabel : {false, true}) {
        AboutWindow about(QStringLiteral("Revision 1.2.3"));
        EXPECT_EQ(about.StaticText2->text(), "Revision 1.2.3");
        about.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&about));
        QTest::mouseClick(onLabel ? static_cast<QWidget*>(about.StaticText2) : &about, Qt::LeftButton, {}, onLabel ? QPoint() : QPoint(10, 190));
        EXPECT_FALSE(about.isVisible()) << (onLabel ? "label" : "background");
    }
}
