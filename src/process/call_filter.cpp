#include "process/call_filter.h"

#if defined(__x86_64__) || defined(__aarch64__)

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kMachine = AUDIT_ARCH_X86_64;
#else
constexpr std::uint32_t kMachine = AUDIT_ARCH_AARCH64;
#endif

enum class Answer { refused, missing, allowed, allowedIfAnyBit, allowedIfNoBit, allowedIfEqual };

// What is done with a call, by its number, and where it depends on an argument, by which and by what in it.
struct Rule {
  std::uint32_t call = 0;
  Answer answer = Answer::allowed;
  std::uint32_t argument = 0;
  std::uint32_t value = 0;
};

// In place of the number of the process, which is known when the program runs.
constexpr std::uint32_t kOwnProcess = 0xFFFFFFFFU;

constexpr std::array kOpenFileRules = {
    Rule{SYS_read},
    Rule{SYS_readv},
    Rule{SYS_pread64},
    Rule{SYS_write},
    Rule{SYS_writev},
    Rule{SYS_lseek},
    Rule{SYS_close},
    Rule{SYS_fstat},
    Rule{SYS_newfstatat},
    Rule{SYS_brk},
    Rule{SYS_munmap},
    Rule{SYS_mremap},
    Rule{SYS_madvise},
    Rule{SYS_mmap, Answer::allowedIfNoBit, 2, PROT_EXEC},
    Rule{SYS_mprotect, Answer::allowedIfNoBit, 2, PROT_EXEC},
    // Whether a stream is a terminal; other requests put characters into its input.
    Rule{SYS_ioctl, Answer::allowedIfEqual, 1, TCGETS},
    Rule{SYS_futex},
    Rule{SYS_sched_yield},
    Rule{SYS_restart_syscall},
    Rule{SYS_clock_gettime},
    Rule{SYS_getrandom},
    Rule{SYS_getpid},
    Rule{SYS_gettid},
    Rule{SYS_rt_sigaction},
    Rule{SYS_rt_sigprocmask},
    Rule{SYS_rt_sigreturn},
    // To end itself, as abort() does.
    Rule{SYS_tgkill, Answer::allowedIfEqual, 0, kOwnProcess},
    Rule{SYS_exit_group},
};

constexpr std::array kThreadRules = {
    Rule{SYS_clone, Answer::allowedIfAnyBit, 0, CLONE_THREAD},
    // Its flags are out of a filter's sight; this makes the C library take clone().
    Rule{SYS_clone3, Answer::missing},
    Rule{SYS_exit},
    Rule{SYS_set_robust_list},
    Rule{SYS_sched_getaffinity},
#ifdef SYS_rseq
    Rule{SYS_rseq},
#endif
};

constexpr std::array kNameRules = {
#ifdef SYS_rename  // newer machines have the others alone
    Rule{SYS_rename},   Rule{SYS_unlink},
#endif
    Rule{SYS_renameat}, Rule{SYS_renameat2}, Rule{SYS_unlinkat},
};

constexpr std::array kWritingRules = {
    Rule{SYS_openat}, Rule{SYS_pwrite64}, Rule{SYS_ftruncate}, Rule{SYS_fallocate}, Rule{SYS_flock},
    Rule{SYS_fcntl},  Rule{SYS_getcwd},   Rule{SYS_fsync},     Rule{SYS_fdatasync},
};

template <std::size_t First, std::size_t Second>
constexpr std::array<Rule, First + Second> joined(const std::array<Rule, First>& first,
                                                  const std::array<Rule, Second>& second) {
  std::array<Rule, First + Second> both{};
  std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), both.begin()));
  return both;
}

// A filter as the kernel takes it: Linux, Documentation/userspace-api/seccomp_filter.rst. It is made by the compiler:
// making it takes as long as all the kernel does with it.
class Filter {
 public:
  template <std::size_t Count>
  explicit constexpr Filter(std::array<Rule, Count> rules) {
    std::sort(rules.begin(), rules.end(), [](const Rule& a, const Rule& b) { return a.call < b.call; });
    load(offsetof(seccomp_data, arch));
    jump(BPF_JEQ, kMachine, 1, 0);
    end(SECCOMP_RET_ERRNO | EPERM);
    load(offsetof(seccomp_data, nr));
    std::array<Rule, 2 * Count + 1> ranges{};
    appendRanges(std::span<const Rule>(ranges.data(), rangesOf(rules, ranges)));
  }

  std::span<sock_filter> lines() { return {lines_.data(), size_}; }

 private:
  // Ranges of numbers with one rule each, from that of the rule to that of the next; returns how many.
  template <std::size_t Count>
  static constexpr std::size_t rangesOf(const std::array<Rule, Count>& rules, std::array<Rule, 2 * Count + 1>& ranges) {
    std::size_t count = 0;
    ranges[count++] = {0, Answer::refused};
    for (const Rule& rule : rules) {
      if (ranges[count - 1].call == rule.call) --count;
      const bool goesOn = count > 0 && ranges[count - 1].answer == Answer::allowed && rule.answer == Answer::allowed;
      if (!goesOn) ranges[count++] = rule;
      ranges[count++] = {rule.call + 1, Answer::refused};
    }
    return count;
  }

  // The kernel runs a new filter once for every number of a call: halving takes a tenth of the time of a list.
  constexpr void appendRanges(std::span<const Rule> ranges) {
    if (ranges.size() == 1) return append(ranges[0]);
    const std::size_t half = ranges.size() / 2;
    const std::size_t branch = size_;
    jump(BPF_JGE, ranges[half].call, 0, 0);
    appendRanges(ranges.first(half));
    lines_[branch].jt = static_cast<std::uint8_t>(size_ - branch - 1);
    appendRanges(ranges.subspan(half));
  }

  constexpr void append(const Rule& rule) {
    if (rule.answer == Answer::allowed) return end(SECCOMP_RET_ALLOW);
    if (rule.answer == Answer::missing) return end(SECCOMP_RET_ERRNO | ENOSYS);
    if (rule.answer == Answer::refused) return end(SECCOMP_RET_ERRNO | EPERM);
    // Flags and requests are in the lower half of an argument, which stands first on both machines.
    load(offsetof(seccomp_data, args) + rule.argument * sizeof(std::uint64_t));
    const bool isRefusedIfTrue = rule.answer == Answer::allowedIfNoBit;
    jump(rule.answer == Answer::allowedIfEqual ? BPF_JEQ : BPF_JSET, rule.value, isRefusedIfTrue ? 1 : 0,
         isRefusedIfTrue ? 0 : 1);
    end(SECCOMP_RET_ALLOW);
    end(SECCOMP_RET_ERRNO | EPERM);
  }

  constexpr void load(std::size_t offset) { add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset), 0, 0); }
  constexpr void end(std::uint32_t value) { add(BPF_RET | BPF_K, value, 0, 0); }
  constexpr void jump(int condition, std::uint32_t value, std::uint8_t ifTrue, std::uint8_t ifFalse) {
    add(BPF_JMP | BPF_K | condition, value, ifTrue, ifFalse);
  }
  constexpr void add(int code, std::uint32_t value, std::uint8_t ifTrue, std::uint8_t ifFalse) {
    lines_[size_++] = {static_cast<std::uint16_t>(code), ifTrue, ifFalse, value};
  }

  // No more than a jump can pass over.
  std::array<sock_filter, 255> lines_{};
  std::size_t size_ = 0;
};

constinit Filter openFiles{joined(joined(kOpenFileRules, kThreadRules), kNameRules)};
constinit Filter oneFile{kOpenFileRules};
constinit Filter writing{joined(kOpenFileRules, kWritingRules)};

std::span<sock_filter> linesOf(CallSet set) {
  switch (set) {
    case CallSet::openFiles:
      return openFiles.lines();
    case CallSet::oneFile:
      return oneFile.lines();
    default:
      return writing.lines();
  }
}

bool install(const sock_fprog& program, unsigned long flags) {
  return ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, flags, &program) == 0;
}

}  // namespace

bool filterCalls(CallSet set) {
  const std::span<sock_filter> lines = linesOf(set);
  for (sock_filter& line : lines) {
    if (line.code == (BPF_JMP | BPF_JEQ | BPF_K) && line.k == kOwnProcess)
      line.k = static_cast<std::uint32_t>(::getpid());
  }
  const sock_fprog program{static_cast<unsigned short>(lines.size()), lines.data()};
  // Kernels before 5.16 would make the processor slower else, against attacks within a process, which has no secrets
  // from itself here.
  return install(program, SECCOMP_FILTER_FLAG_TSYNC | SECCOMP_FILTER_FLAG_SPEC_ALLOW) ||
         install(program, SECCOMP_FILTER_FLAG_TSYNC);
}

#else

bool filterCalls(CallSet) { return false; }

#endif
