// Reads an untrusted HDF5 file and answers with its contents. Other programs of kolvex start it, with limits; it ends
// when it is done or the file makes it crash (base/limited_work.h).
//
//   odbscan catalog                    the catalog of the database (odbstore/scan_program.h)
//   odbscan inspect                    all that there is to say of it (odbstore/inspection.h)
//   odbscan upgrade PATH NAME          writes it in today's layout to PATH, called NAME in messages

#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "base/limited_protocol.h"
#include "base/limited_work.h"
#include "odbscan/scan.h"
#include "odbscan/upgrade.h"
#include "odbstore/scan_program.h"
#include "process/confinement.h"

namespace {

std::string catalog() {
  confineToOneFile();
  int layout = 0;
  const h5::Group root = odbscan::openDatabase(base::kLimitedFile, layout);
  if (layout < 2) return std::string(1, odbstore::kOlderLayout);
  const std::vector<std::byte> bytes = odbscan::scan(root, layout);
  return odbstore::kScanned + std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::string inspection() {
  confineToOneFile();
  int layout = 0;
  const h5::Group root = odbscan::openDatabase(base::kLimitedFile, layout);
  return odbscan::inspect(root, layout);
}

std::string work(std::span<char*> arguments) {
  const std::string_view task = arguments.empty() ? "" : arguments.front();
  if (task == "catalog") return catalog();
  if (task == "inspect") return inspection();
  if (task == "upgrade" && arguments.size() == 3) {
    confineToWriting(arguments[1]);
    odbscan::upgrade(base::kLimitedFile, arguments[1], arguments[2]);
    return {};
  }
  throw std::runtime_error("the program that reads it does not know this request");
}

}  // namespace

int main(int argc, char** argv) {
  // Returns only if it was not started by a program of kolvex.
  const int status = base::serveLimited(argc, argv, work);
  std::fputs("this program is started by other programs of kolvex to read a file safely\n", stderr);
  return status;
}
