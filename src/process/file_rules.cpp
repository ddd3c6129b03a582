#include "process/file_rules.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

#if __has_include(<linux/landlock.h>) && defined(SYS_landlock_create_ruleset)

#include <linux/landlock.h>

namespace {

// Rights that came after the first version; headers may be older than the kernel.
constexpr std::uint64_t kRefer = std::uint64_t{1} << 13U;
constexpr std::uint64_t kTruncate = std::uint64_t{1} << 14U;
constexpr std::uint64_t kRightsOfFirstVersion = kRefer - 1;

// All rights over files that the kernel can take away; 0 where it has no Landlock.
std::uint64_t knownRights() {
  const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) return 0;
  return kRightsOfFirstVersion | (version >= 2 ? kRefer : 0) | (version >= 3 ? kTruncate : 0);
}

bool addRule(int rules, const char* path, std::uint64_t rights) {
  const int file = ::open(path, O_PATH | O_CLOEXEC);
  if (file < 0) return false;
  landlock_path_beneath_attr rule{};
  rule.allowed_access = rights;
  rule.parent_fd = file;
  const bool isAdded = ::syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
  ::close(file);
  return isAdded;
}

// Without a path no file at all is allowed.
bool allow(const char* path, std::uint64_t rights) {
  const std::uint64_t known = knownRights();
  if (known == 0) return false;
  // What an older kernel takes, too: rules over files alone.
  const std::uint64_t handled = known;
  const auto rules = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &handled, sizeof(handled), 0));
  if (rules < 0) return false;
  const bool isComplete = path == nullptr || addRule(rules, path, rights & known);
  const bool isInForce = isComplete && ::syscall(SYS_landlock_restrict_self, rules, 0) == 0;
  ::close(rules);
  return isInForce;
}

}  // namespace

bool allowRenamingIn(const char* directory) {
  return allow(directory, LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG);
}

bool allowWriting(const char* file) {
  return allow(file, LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate);
}

bool allowNoFiles() { return allow(nullptr, 0); }

#else

bool allowRenamingIn(const char*) { return false; }
bool allowWriting(const char*) { return false; }
bool allowNoFiles() { return false; }

#endif
