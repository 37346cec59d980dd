#include "platform/dvdplayback/player/Sandbox.h"

#include "platform/foundation/PathBytes.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>
#include <vector>

namespace Tessaron
{

namespace
{

constexpr rlim_t mostMemory = rlim_t(4) << 30;
constexpr time_t mostSecondsOfComputing = 10;

#if defined(__x86_64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_AARCH64;
#else
#error "The system calls of this architecture are not known here."
#endif

/// Refused with EPERM: they change files, start or touch processes, or reach other machines.
constexpr int refusedCalls[] = {
#ifdef SYS_fork
    SYS_fork,
    SYS_vfork,
#endif
#ifdef SYS_creat
    SYS_creat,
    SYS_mkdir,
    SYS_mknod,
    SYS_rmdir,
    SYS_unlink,
    SYS_rename,
    SYS_link,
    SYS_symlink,
    SYS_chmod,
    SYS_chown,
    SYS_lchown,
    SYS_utime,
    SYS_utimes,
    SYS_futimesat,
#endif
    SYS_execve,
    SYS_execveat,
    SYS_ptrace,
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_kill,
    SYS_tkill,
    SYS_rt_sigqueueinfo,
    SYS_rt_tgsigqueueinfo,
    SYS_pidfd_open,
    SYS_pidfd_getfd,
    SYS_pidfd_send_signal,
    SYS_kcmp,
    SYS_perf_event_open,
    SYS_bpf,
    SYS_userfaultfd,
    SYS_socket,
    SYS_connect,
    SYS_bind,
    SYS_listen,
    SYS_accept,
    SYS_accept4,
    SYS_mkdirat,
    SYS_mknodat,
    SYS_unlinkat,
    SYS_renameat,
    SYS_renameat2,
    SYS_linkat,
    SYS_symlinkat,
    SYS_truncate,
    SYS_fchmod,
    SYS_fchmodat,
    SYS_fchown,
    SYS_fchownat,
    SYS_utimensat,
    SYS_setxattr,
    SYS_lsetxattr,
    SYS_fsetxattr,
    SYS_removexattr,
    SYS_lremovexattr,
    SYS_fremovexattr,
    SYS_mount,
    SYS_umount2,
    SYS_open_tree,
    SYS_move_mount,
    SYS_fsopen,
    SYS_fsconfig,
    SYS_fsmount,
    SYS_fspick,
    SYS_mount_setattr,
    SYS_pivot_root,
    SYS_chroot,
    SYS_unshare,
    SYS_setns,
    SYS_swapon,
    SYS_swapoff,
    SYS_reboot,
    SYS_kexec_load,
    SYS_init_module,
    SYS_finit_module,
    SYS_delete_module,
    SYS_add_key,
    SYS_request_key,
    SYS_keyctl,
    SYS_mq_open,
    SYS_mq_unlink,
    SYS_shmget,
    SYS_shmat,
    SYS_msgget,
    SYS_semget,
    SYS_quotactl,
    SYS_acct,
    SYS_settimeofday,
    SYS_clock_settime,
    SYS_adjtimex,
    SYS_open_by_handle_at,
    SYS_name_to_handle_at,
    SYS_fanotify_init,
    SYS_setuid,
    SYS_setgid,
    SYS_setreuid,
    SYS_setregid,
    SYS_setresuid,
    SYS_setresgid,
    SYS_capset,
    SYS_personality,
};

/// Answered as if the kernel did not have them, so that their older forms, which can be looked into, are taken.
constexpr int unknownCalls[] = {
    SYS_clone3, SYS_openat2, SYS_io_uring_setup, SYS_io_uring_enter, SYS_io_uring_register,
};

constexpr std::uint32_t refused = SECCOMP_RET_ERRNO | EPERM;
constexpr std::uint32_t unknown = SECCOMP_RET_ERRNO | ENOSYS;
constexpr std::uint32_t writing = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC;

/// A filter of system calls, put together.
class CallFilter
{
public:
    CallFilter()
    {
        load(offsetof(struct seccomp_data, arch));
        add(BPF_JMP | BPF_JEQ | BPF_K, architecture, 1, 0);
        answer(SECCOMP_RET_KILL_PROCESS);
        load(offsetof(struct seccomp_data, nr));
#if defined(__x86_64__)
        constexpr std::uint32_t otherNumbering = 0x40000000;
        add(BPF_JMP | BPF_JGE | BPF_K, otherNumbering, 0, 1);
        answer(SECCOMP_RET_KILL_PROCESS);
#endif
    }

    /// Answers a call in that way.
    void on(int call, std::uint32_t verdict)
    {
        add(BPF_JMP | BPF_JEQ | BPF_K, std::uint32_t(call), 0, 1);
        answer(verdict);
    }
    /// Answers it in that way where the bits of an argument are not all clear, or all set.
    void onBits(int call, unsigned int argument, std::uint32_t bits, bool whenSet, std::uint32_t verdict)
    {
        add(BPF_JMP | BPF_JEQ | BPF_K, std::uint32_t(call), 0, 4);
        load(lowHalf(argument));
        add(BPF_JMP | BPF_JSET | BPF_K, bits, std::uint8_t(whenSet ? 0 : 1), std::uint8_t(whenSet ? 1 : 0));
        answer(verdict);
        answer(SECCOMP_RET_ALLOW);
    }
    /// Answers it in that way where an argument is another number.
    void onOtherThan(int call, unsigned int argument, std::uint32_t number, std::uint32_t verdict)
    {
        add(BPF_JMP | BPF_JEQ | BPF_K, std::uint32_t(call), 0, 4);
        load(lowHalf(argument));
        add(BPF_JMP | BPF_JEQ | BPF_K, number, 1, 0);
        answer(verdict);
        answer(SECCOMP_RET_ALLOW);
    }

    [[nodiscard]] bool install()
    {
        answer(SECCOMP_RET_ALLOW);
        struct sock_fprog program = {static_cast<unsigned short>(m_steps.size()), m_steps.data()};
        return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
            && ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program) == 0;
    }

private:
    static std::uint32_t lowHalf(unsigned int argument)
    {
        return std::uint32_t(offsetof(struct seccomp_data, args) + argument * sizeof(std::uint64_t));
    }
    void load(std::uint32_t offset)
    {
        add(BPF_LD | BPF_W | BPF_ABS, offset, 0, 0);
    }
    void answer(std::uint32_t verdict)
    {
        add(BPF_RET | BPF_K, verdict, 0, 0);
    }
    void add(int code, std::uint32_t value, std::uint8_t ifTrue, std::uint8_t ifFalse)
    {
        m_steps.push_back({std::uint16_t(code), ifTrue, ifFalse, value});
    }

    std::vector<struct sock_filter> m_steps;
};

bool filterCalls()
{
    CallFilter filter;
    for (const int call : refusedCalls)
        filter.on(call, refused);
    for (const int call : unknownCalls)
        filter.on(call, unknown);
#ifdef SYS_open
    filter.onBits(SYS_open, 1, writing, true, refused);
#endif
    filter.onBits(SYS_openat, 2, writing, true, refused);
    // Threads of its own only.
    filter.onBits(SYS_clone, 0, CLONE_THREAD, false, refused);
    // abort() sends its signal in this way.
    filter.onOtherThan(SYS_tgkill, 0, std::uint32_t(::getpid()), refused);
    return filter.install();
}

/// A set of rules about files, as the kernel counts them.
class FileRules
{
public:
    /// Not valid where the system has no Landlock.
    FileRules()
    {
        const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
        if (version < 1)
            return;
        struct landlock_ruleset_attr attributes {
        };
        attributes.handled_access_fs = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1; // all of the first version
#ifdef LANDLOCK_ACCESS_FS_REFER
        if (version >= 2)
            attributes.handled_access_fs |= LANDLOCK_ACCESS_FS_REFER;
#endif
        m_rules.reset(int(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof(attributes), 0)));
    }

    [[nodiscard]] bool isValid() const
    {
        return m_rules.isValid();
    }

    [[nodiscard]] bool allow(const QByteArray &path, std::uint64_t access)
    {
        const UniqueDescriptor place(::open(path.constData(), O_PATH | O_CLOEXEC));
        struct landlock_path_beneath_attr rule {
        };
        rule.allowed_access = access;
        rule.parent_fd = place.get();
        return place && ::syscall(SYS_landlock_add_rule, m_rules.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
    }

    [[nodiscard]] bool enforce() const
    {
        return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
            && ::syscall(SYS_landlock_restrict_self, m_rules.get(), 0) == 0;
    }

private:
    UniqueDescriptor m_rules;
};

/// False where the system has Landlock and refuses it.
bool showOnly(const DiscPlace &place, SandboxFacts *facts)
{
    FileRules rules;
    if (!rules.isValid())
        return true;
    bool isAllowed = rules.allow(place.path,
                                 place.isFolder ? LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR
                                                : LANDLOCK_ACCESS_FS_READ_FILE);
    // The library looks for the folder's name in the folder around it.
    if (place.isFolder)
        isAllowed = isAllowed && rules.allow(parentPath(place.path), LANDLOCK_ACCESS_FS_READ_DIR);
    facts->seesOnlyTheDisc = isAllowed && rules.enforce();
    return facts->seesOnlyTheDisc;
}

bool limitResources()
{
    constexpr struct rlimit none = {0, 0};
    struct rlimit memory {
    };
    bool isLimited = ::setrlimit(RLIMIT_CORE, &none) == 0 && ::setrlimit(RLIMIT_FSIZE, &none) == 0;
    // A sanitizer takes terabytes of addresses.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    isLimited = isLimited && ::getrlimit(RLIMIT_AS, &memory) == 0;
    memory.rlim_cur = std::min(memory.rlim_cur, mostMemory);
    memory.rlim_max = std::min(memory.rlim_max, mostMemory);
    isLimited = isLimited && ::setrlimit(RLIMIT_AS, &memory) == 0;
#else
    static_cast<void>(memory);
#endif
    return isLimited;
}

} // namespace

NSError shutOffAllBut(const DiscPlace &place, SandboxFacts *facts)
{
    // The library goes through its working folder.
    const QByteArray folder = place.isFolder ? place.path : QByteArray("/");
    if (::chdir(folder.constData()) != 0 || !limitResources() || !showOnly(place, facts) || !filterCalls())
        return NSError::errorWithErrno(errno, {});
    showProgress();
    return {};
}

void showProgress()
{
    constexpr struct itimerval patience = {{0, 0}, {mostSecondsOfComputing, 0}};
    ::setitimer(ITIMER_PROF, &patience, nullptr);
}

} // namespace Tessaron
