#pragma once

#include <string>

// The files of this folder, put in at build time.
const std::string& nxAuthorMembersText();
const std::string& nxAuthorReadMembersText();
const std::string& nxAuthorDefinitionsText();
const std::string& nxAuthorTablesText();
const std::string& nxAuthorProbeText();
const std::string& nxAuthorBarsText();
const std::string& nxAuthorQuotesText();
const std::string& nxAuthorMakerText();
const std::string& nxAuthorSpreadText();
const std::string& nxAuthorBarsTestText();
const std::string& nxAuthorQuotesTestText();
const std::string& nxAuthorMakerTestText();
const std::string& nxAuthorSpreadTestText();
const std::string& nxAuthorProductsText();
const std::string& nxAuthorReadmeText();
