#include "PrintingHelpGlobals.h"

#include "HtmlHelpView.h"

#include <QPrintDialog>
#include <QPrinter>

void PrintingHelpGlobals::UHPrint(HtmlHelpView& page)
{
    QPrinter printer;
    printer.setDocName(page.documentTitle());
    QPrintDialog dialog(&printer, page.window());
    dialog.setWindowTitle(QStringLiteral("Print Help Page"));
    if (dialog.exec() == QDialog::Accepted)
        page.print(&printer);
}
