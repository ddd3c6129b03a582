#include "run_records.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "base/descriptor.h"
#include "base/file_error.h"
#include "base/own_programs.h"
#include "batch/run/child_process.h"
#include "batch/run/log_tail.h"
#include "inspect/open_database.h"
#include "programs/batch/program_files.h"

namespace inspect {

namespace {

namespace fs = std::filesystem;

// Removed with what is in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (fs::temp_directory_path() / "kolvex-diff.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
    path_ = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string file(const char* name) const { return (path_ / name).string(); }
  std::string path() const { return path_.string(); }

 private:
  fs::path path_;
};

bool isDatabase(const std::string& path) {
  constexpr std::string_view kSignature = "\x89HDF\r\n\x1a\n";
  std::string begin(kSignature.size(), '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(begin.data(), static_cast<std::streamsize>(begin.size()));
  return begin == kSignature || path.ends_with(".odb");
}

// The extraction appends ".odb" to names that do not contain it, so it gets a link.
std::string extracted(const std::string& path, const std::string& configuration) {
  const TemporaryDirectory directory;
  std::ofstream(directory.file("configuration"), std::ios::binary) << configuration;
  fs::create_symlink(fs::absolute(path), directory.file("database.odb"));
  const base::Descriptor log(::open(directory.file("log").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  batch::ChildProcess program({base::ownProgram("quarnish"),
                               {"-odb", "database.odb", "-config", "configuration"},
                               directory.path(),
                               log.get()});
  const int status = program.reap();
  const bool isComplete = WIFEXITED(status) && WEXITSTATUS(status) == 0 && fs::exists(directory.file("paramsdone.txt"));
  if (!isComplete) throw base::FileError(path, "", "cannot be extracted from: " + batch::lastWords(log.get()));
  return batch::textOfFile(directory.file("params.txt"));
}

}  // namespace

RunRecords readRecords(const std::string& path, const std::string& configuration) {
  if (fs::is_directory(path)) return {batch::textOfFile(path + "/params.txt"), nullptr};
  if (!isDatabase(path)) {
    const std::string text = batch::textOfFile(path);
    if (!text.empty() && text.substr(0, text.find('\n')).find('\t') == std::string::npos)
      throw base::FileError(path, "", "is neither a database nor a file of records: its first line has no tab");
    return {text, nullptr};
  }
  std::shared_ptr<const odbstore::Reader> database = openDatabase(path);
  return {extracted(path, configuration), std::move(database)};
}

}  // namespace inspect
