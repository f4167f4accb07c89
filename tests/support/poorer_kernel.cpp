// Runs a program as if the kernel lacked something: poorer_kernel PART=ERRNO... -- PROGRAM ARGUMENT...
// A part is landlock, landlock-use, seccomp or seccomp-use; "use" leaves the question whether it is there.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <seccomp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

struct Call {
  const char* part;
  int call;
  bool ofFilters;  // only where it asks for a filter
};

constexpr Call kCalls[] = {
    {"landlock", SCMP_SYS(landlock_create_ruleset), false},
    {"landlock", SCMP_SYS(landlock_restrict_self), false},
    {"landlock-use", SCMP_SYS(landlock_restrict_self), false},
    {"seccomp", SCMP_SYS(seccomp), false},
    {"seccomp", SCMP_SYS(prctl), true},
    {"seccomp-use", SCMP_SYS(prctl), true},
};

void require(bool fine, const char* what) {
  if (!fine) throw std::runtime_error(what);
}

void refuse(scmp_filter_ctx filter, const std::string& part, unsigned error) {
  bool known = false;
  for (const Call& call : kCalls) {
    if (part != call.part) continue;
    known = true;
    const scmp_arg_cmp setsFilter{0, SCMP_CMP_EQ, PR_SET_SECCOMP, 0};
    require(seccomp_rule_add_array(filter, SCMP_ACT_ERRNO(error), call.call, call.ofFilters ? 1 : 0,
                                   &setsFilter) == 0,
            "no such rule");
  }
  require(known, "no such part");
}

unsigned errorCalled(const std::string& name) {
  for (const auto& [error, known] :
       {std::pair{ENOSYS, "ENOSYS"}, {EINVAL, "EINVAL"}, {EOPNOTSUPP, "EOPNOTSUPP"}, {EPERM, "EPERM"}}) {
    if (name == known) return static_cast<unsigned>(error);
  }
  throw std::runtime_error("no such error");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
    require(filter != nullptr, "no filter");
    int at = 1;
    for (; at < argc && std::strcmp(argv[at], "--") != 0; ++at) {
      const std::string word = argv[at];
      const std::size_t equals = word.find('=');
      refuse(filter, word.substr(0, equals), errorCalled(word.substr(equals + 1)));
    }
    require(at + 1 < argc, "no program");
    require(seccomp_load(filter) == 0, "the filter does not load");
    execv(argv[at + 1], argv + at + 1);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "poorer_kernel: %s\n", failure.what());
  }
  return 125;
}
