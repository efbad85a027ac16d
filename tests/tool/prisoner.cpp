/// A tool that a hostile movie has taken over: tries what it must not be able to do, and prints the names of
/// what it could do. Arguments: source, output, secret file, folder, port of a listener, process to attack.
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <linux/bpf.h>
#include <linux/io_uring.h>
#include <linux/keyctl.h>
#include <sched.h>
#include <string>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>

namespace {

void attempt(const char* name, const std::function<bool()>& act) {
    if (act()) std::printf("%s\n", name);
    std::fflush(stdout);
}

bool opens(const std::string& path, int flags) {
    const int file = ::open(path.c_str(), flags | O_CLOEXEC, 0600);
    if (file >= 0) ::close(file);
    return file >= 0;
}

bool connects(int family, const void* address, socklen_t size, int (*act)(int, const sockaddr*, socklen_t)) {
    const int socket = ::socket(family, SOCK_STREAM, 0);
    if (socket < 0) return false;
    const bool done = act(socket, static_cast<const sockaddr*>(address), size) == 0;
    ::close(socket);
    return done;
}

bool endsWell(pid_t child) {
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

bool startsAChild(const std::function<int()>& inChild) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(inChild());
    return endsWell(child);
}

bool succeeds(long result) {
    return result >= 0;
}

}  // namespace

int main(int count, char** values) {
    if (count == 1) return 0;  // Started by itself.
    if (count != 7) return 2;
    const std::string source = values[1], output = values[2], secret = values[3], folder = values[4];
    const int port = std::atoi(values[5]);
    const pid_t victim = std::atoi(values[6]);

    sockaddr_in internet = {};
    internet.sin_family = AF_INET;
    internet.sin_port = htons(static_cast<uint16_t>(port));
    internet.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    sockaddr_in anyPort = internet;
    anyPort.sin_port = 0;
    sockaddr_un local = {};
    local.sun_family = AF_UNIX;
    std::snprintf(local.sun_path, sizeof local.sun_path, "%s/socket", folder.c_str());
    sockaddr_un abstract = {};
    abstract.sun_family = AF_UNIX;
    std::snprintf(abstract.sun_path + 1, sizeof abstract.sun_path - 1, "ravelin-prisoner-%d", ::getpid());

    // What the tool needs.
    attempt("needed: read the source", [&] { return opens(source, O_RDONLY); });
    attempt("needed: write the output", [&] { return opens(output, O_RDWR | O_CREAT | O_TRUNC); });
    attempt("needed: threads", [] { return std::thread([] {}).join(), true; });
    attempt("needed: libraries", [] { return opens("/etc/ld.so.cache", O_RDONLY); });

    // Files.
    attempt("read a file", [&] { return opens(secret, O_RDONLY); });
    attempt("write to a file", [&] { return opens(secret, O_WRONLY); });
    attempt("write to the source", [&] { return opens(source, O_WRONLY); });
    attempt("list a folder", [&] { return opens(folder, O_RDONLY | O_DIRECTORY); });
    attempt("create a file", [&] { return opens(folder + "/created", O_WRONLY | O_CREAT); });
    attempt("create a folder", [&] { return ::mkdir((folder + "/folder").c_str(), 0700) == 0; });
    attempt("create a link", [&] { return ::symlink("/", (folder + "/link").c_str()) == 0; });
    attempt("link a file", [&] { return ::link(secret.c_str(), (folder + "/linked").c_str()) == 0; });
    attempt("rename a file", [&] {
        const std::string renamed = folder + "/renamed";
        return ::rename(secret.c_str(), renamed.c_str()) == 0 &&
               ::rename(renamed.c_str(), secret.c_str()) == 0;
    });
    attempt("delete a file", [&] { return ::unlink((folder + "/victim").c_str()) == 0; });
    attempt("truncate a file", [&] { return ::truncate(secret.c_str(), 1) == 0; });
    attempt("change permissions", [&] { return ::chmod(secret.c_str(), 0644) == 0; });
    attempt("change times", [&] { return ::utimensat(AT_FDCWD, secret.c_str(), nullptr, 0) == 0; });
    attempt("set an attribute", [&] {
        return ::setxattr(secret.c_str(), "user.prisoner", "1", 1, 0) == 0 || errno == EOPNOTSUPP;
    });
    attempt("read the environment",
            [&] { return opens("/proc/" + std::to_string(victim) + "/environ", O_RDONLY); });
    attempt("use an inherited file", [] {
        for (int file = 3; file < 1024; ++file) {
            if (::fcntl(file, F_GETFD) >= 0) return true;
        }
        return false;
    });

    // The network and other processes.
    attempt("connect", [&] { return connects(AF_INET, &internet, sizeof internet, ::connect); });
    attempt("listen", [&] { return connects(AF_INET, &anyPort, sizeof anyPort, ::bind); });
    attempt("send datagrams", [] { return succeeds(::socket(AF_INET, SOCK_DGRAM, 0)); });
    attempt("bind a unix socket", [&] { return connects(AF_UNIX, &local, sizeof local, ::bind); });
    attempt("bind an abstract socket", [&] { return connects(AF_UNIX, &abstract, sizeof abstract, ::bind); });
    attempt("netlink", [] { return succeeds(::socket(AF_NETLINK, SOCK_RAW, 0)); });
    attempt("pair of sockets", [] {
        int pair[2];
        return ::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0;
    });
    attempt("signal a process", [&] { return ::kill(victim, 0) == 0; });
    attempt("signal by a descriptor", [&] { return succeeds(::syscall(SYS_pidfd_open, victim, 0)); });
    attempt("trace a process", [&] {
        return ::ptrace(PTRACE_SEIZE, victim, 0, 0) == 0 && (::ptrace(PTRACE_INTERRUPT, victim, 0, 0), true);
    });
    attempt("change limits", [&] {
        rlimit limit = {};
        return ::prlimit(victim, RLIMIT_CORE, nullptr, &limit) == 0;
    });
    attempt("share memory", [] { return ::shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600) >= 0; });
    attempt("start a process", [] { return startsAChild([] { return 0; }); });
    attempt("start a program",
            [] { return startsAChild([] { return ::execl("/bin/true", "true", nullptr); }); });
    attempt("start itself",
            [&] { return startsAChild([&] { return ::execl(values[0], values[0], nullptr); }); });
    attempt("outlive the application", [] { return ::prctl(PR_SET_PDEATHSIG, 0) == 0; });
    attempt("leave the group", [] { return startsAChild([] { return ::setsid() < 0; }); });

    // The kernel.
    attempt("namespaces", [] { return startsAChild([] { return ::unshare(CLONE_NEWUSER); }); });
    attempt("keys", [] {
        return succeeds(::syscall(SYS_keyctl, KEYCTL_GET_KEYRING_ID, KEY_SPEC_SESSION_KEYRING, 1));
    });
    attempt("io_uring", [] {
        io_uring_params parameters = {};
        return succeeds(::syscall(SYS_io_uring_setup, 1, &parameters));
    });
    attempt("bpf", [] {
        bpf_attr attributes = {};
        attributes.map_type = BPF_MAP_TYPE_ARRAY;
        attributes.key_size = attributes.value_size = 4;
        attributes.max_entries = 1;
        return succeeds(::syscall(SYS_bpf, BPF_MAP_CREATE, &attributes, sizeof attributes));
    });
    attempt("dump core", [] {
        rlimit limit = {};
        return ::getrlimit(RLIMIT_CORE, &limit) == 0 && limit.rlim_max > 0;
    });
    attempt("regain privileges", [] { return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0; });
    attempt("use capabilities", [] {
        // Reading a file that belongs to nobody else is what root could always do.
        for (int capability = 0; capability < 64; ++capability) {
            if (::prctl(PR_CAPBSET_READ, capability, 0, 0, 0) == 1 && ::geteuid() == 0) return true;
        }
        return false;
    });
    attempt("take the memory", [] {
        constexpr size_t kSize = size_t{8} << 30;
        void* memory = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        return memory != MAP_FAILED;
    });
    attempt("fill the disk", [&] {
        const int file = ::open(output.c_str(), O_WRONLY);
        return file >= 0 && ::pwrite(file, "x", 1, off_t{1} << 20) == 1;
    });
    return 0;
}
