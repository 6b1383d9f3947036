#include "host/report/nxSweepPage.h"

#include "host/report/nxDataPage.h"

void nxSweepPage::Write(std::ostream& out, const std::string& document)
{
    nxDataPage::Write(out, nxSweepPageText(), {{"sweep", document}});
}
