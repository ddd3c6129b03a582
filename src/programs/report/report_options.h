// The command line of `kolvex report`.
#pragma once

#include "report/write_page.h"
#include "tool/command.h"

namespace report {

// Fills `request` when it parses; it must live as long. Where no page is named, `request.page` stays empty.
tool::Command reportCommand(PageRequest& request);

// The page where no other is named: the database's name with the ending ".html", in the working directory.
std::string pageOf(const std::string& database);

}  // namespace report
