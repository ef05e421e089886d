#pragma once

#include "UniHelpGlobals.h"

// The application's side of the help system: the viewer's Print button
// prints the page shown, through the desktop's print dialog (which also
// prints to a PDF file).
class PrintingHelpGlobals final : public UniHelpGlobals {
public:
    using UniHelpGlobals::UniHelpGlobals;
    void UHPrint(HtmlHelpView& page) override;
};
