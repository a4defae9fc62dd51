#include "engine/isolation/confinement.h"

#include "engine/isolation/descriptor.h"
#include "engine/isolation/protocol.h"
#include "engine/limits.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

namespace isolation {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true; // the sanitizers map terabytes
#else
constexpr bool sanitized = false;
#endif

/// Stands for the process's own number, which is not known while the filter is made.
constexpr quint32 ownPid = 0x4c554d4f;

using Filter = std::unique_ptr<void, void (*)(scmp_filter_ctx)>;

/// What a decoder needs once it stands: memory, its connection, clocks, threads and its own end. A call that is not
/// here is refused and not punished: a library may try something harmless that nobody thought of.
constexpr int allowedCalls[] = {SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(write), SCMP_SYS(writev),
    SCMP_SYS(lseek), SCMP_SYS(close), SCMP_SYS(fstat), SCMP_SYS(newfstatat), SCMP_SYS(recvmsg), SCMP_SYS(sendmsg),
    SCMP_SYS(poll), SCMP_SYS(ppoll), SCMP_SYS(mremap), SCMP_SYS(munmap), SCMP_SYS(madvise), SCMP_SYS(brk),
    SCMP_SYS(futex), SCMP_SYS(sched_yield), SCMP_SYS(sched_getaffinity), SCMP_SYS(membarrier), SCMP_SYS(rseq),
    SCMP_SYS(set_robust_list), SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(clock_nanosleep),
    SCMP_SYS(nanosleep), SCMP_SYS(gettimeofday), SCMP_SYS(time), SCMP_SYS(times), SCMP_SYS(getrandom), SCMP_SYS(getpid),
    SCMP_SYS(gettid), SCMP_SYS(getuid), SCMP_SYS(geteuid), SCMP_SYS(getgid), SCMP_SYS(getegid), SCMP_SYS(sysinfo),
    SCMP_SYS(uname), SCMP_SYS(getrusage), SCMP_SYS(getcpu), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack), SCMP_SYS(restart_syscall), SCMP_SYS(exit), SCMP_SYS(exit_group),
    SCMP_SYS(dup), SCMP_SYS(eventfd2)}; // the last one for the threads of Qt's painter

/// Refused in every case with the reason that a library expects where there is no permission.
constexpr int refusedCalls[] = {SCMP_SYS(open), SCMP_SYS(openat), SCMP_SYS(openat2), SCMP_SYS(creat), SCMP_SYS(stat),
    SCMP_SYS(lstat), SCMP_SYS(statx), SCMP_SYS(access), SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(readlink),
    SCMP_SYS(readlinkat), SCMP_SYS(getcwd), SCMP_SYS(getdents64), SCMP_SYS(socket), SCMP_SYS(socketpair),
    SCMP_SYS(ioctl), SCMP_SYS(prctl), SCMP_SYS(unlink), SCMP_SYS(mkdir), SCMP_SYS(rename), SCMP_SYS(pipe2),
    SCMP_SYS(memfd_create), SCMP_SYS(sched_setaffinity), SCMP_SYS(sched_setscheduler), SCMP_SYS(sched_getparam),
    SCMP_SYS(sched_getscheduler), SCMP_SYS(setpriority)};

template <class... Tests> bool allow(const Filter &filter, int call, Tests... tests)
{
    const std::array<scmp_arg_cmp, sizeof...(tests)> list{tests...};
    // A call that this kind of machine does not have needs no rule.
    const int outcome = seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, call, sizeof...(tests), list.data());
    return outcome == 0 || outcome == -EDOM;
}

bool addRules(const Filter &filter)
{
    bool good = true;
    for (const int call : allowedCalls)
        good = good && allow(filter, call);
    for (const int call : refusedCalls) {
        const int outcome = seccomp_rule_add_array(filter.get(), SCMP_ACT_ERRNO(EACCES), call, 0, nullptr);
        good = good && (outcome == 0 || outcome == -EDOM);
    }
    // The C library falls back to the older call, whose flags a filter can see.
    good = good && seccomp_rule_add_array(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0, nullptr) == 0;
    return good && allow(filter, SCMP_SYS(mmap), scmp_arg_cmp{2, SCMP_CMP_MASKED_EQ, PROT_EXEC, 0})
        && allow(filter, SCMP_SYS(mprotect), scmp_arg_cmp{2, SCMP_CMP_MASKED_EQ, PROT_EXEC, 0})
        && allow(filter, SCMP_SYS(clone), scmp_arg_cmp{0, SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD})
        && allow(filter, SCMP_SYS(fcntl), scmp_arg_cmp{1, SCMP_CMP_EQ, F_GETFL, 0})
        && allow(filter, SCMP_SYS(fcntl), scmp_arg_cmp{1, SCMP_CMP_EQ, F_GETFD, 0})
        && allow(filter, SCMP_SYS(tgkill), scmp_arg_cmp{0, SCMP_CMP_EQ, ownPid, 0})
        && allow(filter, SCMP_SYS(prlimit64), scmp_arg_cmp{0, SCMP_CMP_EQ, 0, 0});
}

std::vector<sock_filter> makeFilter(Unknown unknown)
{
    const Filter filter(
        seccomp_init(unknown == Unknown::Ends ? SCMP_ACT_KILL_PROCESS : SCMP_ACT_ERRNO(EPERM)), seccomp_release);
    const Descriptor file(memfd_create("lumora-filter", MFD_CLOEXEC));
    if (!filter || !file || !addRules(filter) || seccomp_export_bpf(filter.get(), file.value()) != 0)
        return {};
    const off_t bytes = lseek(file.value(), 0, SEEK_END);
    std::vector<sock_filter> program(size_t(bytes) / sizeof(sock_filter));
    if (pread(file.value(), program.data(), size_t(bytes), 0) != bytes)
        return {};
    return program;
}

// The kernel's numbers, also those that are newer than the header of the build machine.
struct Rules
{
    quint64 files;
    quint64 network;
    quint64 scopes;
};

int versionOfFileRules()
{
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version > 0 ? int(version) : 0;
}

/// Everything the kernel has rules for, and not one exception.
bool applyFileRules(int version)
{
    const int fileRights = version >= 5 ? 16 : version >= 3 ? 15 : version == 2 ? 14 : 13;
    const Rules rules{(quint64(1) << fileRights) - 1, 3, 3};
    const size_t known = version >= 6 ? sizeof rules : version >= 4 ? 2 * sizeof(quint64) : sizeof(quint64);
    const Descriptor set(int(syscall(SYS_landlock_create_ruleset, &rules, known, 0)));
    return set && syscall(SYS_landlock_restrict_self, set.value(), 0) == 0;
}

bool limit(__rlimit_resource what, quint64 soft, quint64 hard)
{
    rlimit now;
    if (getrlimit(what, &now) != 0)
        return false;
    const rlimit wanted{std::min<rlim_t>(soft, now.rlim_max), std::min<rlim_t>(hard, now.rlim_max)};
    return setrlimit(what, &wanted) == 0;
}

bool applyLimits(const Confinement &confinement)
{
    constexpr quint64 room = 256 * 1024 * 1024;
    constexpr quint64 stack = 8 * 1024 * 1024;
    const quint64 budget = quint64(limits::decodeBudget());
    bool good = limit(RLIMIT_NOFILE, 32, 32) && limit(RLIMIT_CORE, 0, 0) && limit(RLIMIT_MEMLOCK, 0, 0)
        && limit(RLIMIT_STACK, stack, stack);
    if (!sanitized) {
        const quint64 memory = confinement.addressSpace + budget + room;
        // The program's arenas come on top, and only the program makes them.
        good = good && limit(RLIMIT_AS, memory, memory + budget + quint64(limits::maximumFileBytes) + room);
    }
    if (!confinement.mayTalk)
        good = good && limit(RLIMIT_FSIZE, 0, 0);
    return good;
}

bool applyFilter(std::vector<sock_filter> &filter)
{
    for (sock_filter &step : filter) {
        if (BPF_CLASS(step.code) == BPF_JMP && step.k == ownPid)
            step.k = quint32(getpid());
    }
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

quint64 mappedBytes()
{
    unsigned long long pages = 0;
    if (std::FILE *const file = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(file, "%llu", &pages) != 1)
            pages = 0;
        std::fclose(file);
    }
    return pages * quint64(sysconf(_SC_PAGESIZE));
}

}

Confinement prepareConfinement(Unknown unknown, bool mayTalk)
{
    return {makeFilter(unknown), versionOfFileRules(), mappedBytes(), mayTalk};
}

quint32 confine(Confinement &confinement)
{
    quint32 layers = 0;
    if (applyLimits(confinement))
        layers |= Limits;
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0)
        layers |= NoNewPrivileges;
    if (confinement.fileRules > 0 && applyFileRules(confinement.fileRules))
        layers |= FileRules;
    if (!confinement.filter.empty() && applyFilter(confinement.filter))
        layers |= CallFilter;
    return layers;
}

void allowMemory(qint64 more)
{
    rlimit now;
    if (sanitized || getrlimit(RLIMIT_AS, &now) != 0 || now.rlim_cur == RLIM_INFINITY)
        return;
    now.rlim_cur = std::min<rlim_t>(now.rlim_cur + rlim_t(more), now.rlim_max);
    setrlimit(RLIMIT_AS, &now);
}

}
