#pragma once

#include <QString>

#include <memory>

class HelpPlatform;
class HtmlHelpView;
class UniHelpEngine;

// The help system's shared state and its only way of reporting to the
// application. One instance, owned by the application; a test makes its own.
class UniHelpGlobals {
public:
    explicit UniHelpGlobals(HelpPlatform& platform);
    virtual ~UniHelpGlobals();

    // The one engine; the application sets it once the help folder is known.
    std::unique_ptr<UniHelpEngine> UniHelp;

    // The viewer's last placement, written when it deactivates or closes and
    // applied by Run only when the engine's AutoSet is false. Not saved.
    int UHelpWidth = 900;
    int UHelpHeight = 600;
    int UHelpTop = 80;
    int UHelpLeft = 80;

    void UHError(const QString& message);
    void UHViewerError(int code, const QString& description);

    // Hooks an application may override: the first may refuse the HTML view.
    virtual bool UHViewerStatus(bool available) { return available; }
    virtual void UHClosed() {}
    // Print asked for on this page; without an override nothing happens.
    virtual void UHPrint(HtmlHelpView& page) { (void)page; }

    HelpPlatform& Platform() { return m_platform; }

private:
    HelpPlatform& m_platform;
};
