// Runs a program and watches every system call of it that changes a file below a folder: counts them, writes them down,
// and makes the n-th the program's last, or lets it fail or fall short. The program needs no hooks for that, and what a
// library does is met too. For x86-64; elsewhere it ends with 77.
//
// trace_writes --under FOLDER [--record FILE] [--at N --do kill|half|short|ERRNO [--ever]] PROGRAM [WORD ...]
//   --record   one line of JSON for each call, in order, with what was written in hexadecimal
//   --do       kill: the program dies before the call; half: after half of the call's bytes; short: half of the bytes are
//              written; a number: the call fails with this errno
//   --ever     and so does every later one
// Only the program's own calls count, not those of programs that it starts; they end with it. SIGTERM is passed on.
// Ends with the program's status, or 137 if it was killed; the last line to descriptor 3, if open, is the number of calls.
#ifdef __x86_64__
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <map>
#include <string>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kNone = -1;

// Where a call has what; numbers of arguments, kNone for what it has not.
struct Call {
    int number;
    const char *name;
    int descriptor = kNone;
    int folder = kNone; // of the path, for the calls that end in "at"
    int path = kNone;
    int otherFolder = kNone;
    int otherPath = kNone;
    int bytes = kNone; // the count follows, then the offset, if there is one
    int value = kNone; // a length, flags or a mode
};

// clang-format off
constexpr auto kCalls = std::to_array<Call>({
    {.number = SYS_write, .name = "write", .descriptor = 0, .bytes = 1},
    {.number = SYS_pwrite64, .name = "pwrite", .descriptor = 0, .bytes = 1},
    {.number = SYS_ftruncate, .name = "ftruncate", .descriptor = 0, .value = 1},
    {.number = SYS_fallocate, .name = "fallocate", .descriptor = 0, .value = 3},
    {.number = SYS_fsync, .name = "fsync", .descriptor = 0},
    {.number = SYS_fdatasync, .name = "fsync", .descriptor = 0},
    {.number = SYS_fchmod, .name = "fchmod", .descriptor = 0, .value = 1},
    {.number = SYS_fchown, .name = "fchown", .descriptor = 0, .value = 1},
    {.number = SYS_writev, .name = "other", .descriptor = 0},
    {.number = SYS_pwritev, .name = "other", .descriptor = 0},
    {.number = SYS_pwritev2, .name = "other", .descriptor = 0},
    {.number = SYS_sendfile, .name = "other", .descriptor = 0},
    {.number = SYS_copy_file_range, .name = "other", .descriptor = 2},
    {.number = SYS_fsetxattr, .name = "other", .descriptor = 0},
    {.number = SYS_open, .name = "open", .path = 0, .value = 1},
    {.number = SYS_creat, .name = "creat", .path = 0},
    {.number = SYS_openat, .name = "open", .folder = 0, .path = 1, .value = 2},
    {.number = SYS_truncate, .name = "truncate", .path = 0, .value = 1},
    {.number = SYS_unlink, .name = "unlink", .path = 0},
    {.number = SYS_unlinkat, .name = "unlink", .folder = 0, .path = 1},
    {.number = SYS_rmdir, .name = "unlink", .path = 0},
    {.number = SYS_mkdir, .name = "mkdir", .path = 0},
    {.number = SYS_mkdirat, .name = "mkdir", .folder = 0, .path = 1},
    {.number = SYS_chmod, .name = "chmod", .path = 0, .value = 1},
    {.number = SYS_fchmodat, .name = "chmod", .folder = 0, .path = 1, .value = 2},
    {.number = SYS_rename, .name = "rename", .path = 0, .otherPath = 1},
    {.number = SYS_renameat, .name = "rename", .folder = 0, .path = 1, .otherFolder = 2, .otherPath = 3},
    {.number = SYS_renameat2, .name = "rename", .folder = 0, .path = 1, .otherFolder = 2, .otherPath = 3},
    {.number = SYS_link, .name = "link", .path = 0, .otherPath = 1},
    {.number = SYS_linkat, .name = "link", .folder = 0, .path = 1, .otherFolder = 2, .otherPath = 3},
    {.number = SYS_symlink, .name = "symlink", .path = 1, .otherPath = 0},
    {.number = SYS_symlinkat, .name = "symlink", .folder = 1, .path = 2, .otherPath = 0},
});
// clang-format on

enum class Deed { None, Kill, Half, Short, Fail };

struct Asked {
    std::string under;
    std::FILE *record = nullptr;
    long at = 0;
    Deed deed = Deed::None;
    int error = 0;
    bool forEver = false;
};

Asked gAsked;
pid_t gProgram = 0;
long gCount = 0;
std::map<pid_t, std::string> gOpenRecords; // of the calls that each thread is in

using Arguments = std::array<std::uint64_t, 6>;

std::string Memory(pid_t thread, std::uint64_t address, std::size_t count) {
    std::string bytes(count, '\0');
    const iovec here = {bytes.data(), count};
    const iovec there = {reinterpret_cast<void *>(address), count};
    const ssize_t done = process_vm_readv(thread, &here, 1, &there, 1, 0);
    bytes.resize(done < 0 ? 0 : static_cast<std::size_t>(done));
    return bytes;
}

std::string Text(pid_t thread, std::uint64_t address) {
    constexpr std::size_t kPage = 4096;
    std::string text;
    for (;;) { // a page at a time, as the next may not be there
        const std::string more = Memory(thread, address, kPage - address % kPage);
        const std::size_t end = more.find('\0');
        text += more.substr(0, end);
        if (end != std::string::npos || more.empty()) {
            return text;
        }
        address += more.size();
    }
}

std::string DescriptorFile(pid_t thread, std::uint64_t descriptor) {
    return "/proc/" + std::to_string(thread) + "/fd/" + std::to_string(static_cast<int>(descriptor));
}

std::string LinkTarget(const std::string &link) {
    std::error_code error;
    return std::filesystem::read_symlink(link, error).string();
}

std::string PathOf(pid_t thread, const Arguments &arguments, int folder, int path) {
    const std::string given = Text(thread, arguments[static_cast<std::size_t>(path)]);
    if (given.starts_with('/')) {
        return given;
    }
    const auto base =
        folder == kNone ? AT_FDCWD : static_cast<int>(arguments[static_cast<std::size_t>(folder)]);
    const std::string proc = base == AT_FDCWD ? "/proc/" + std::to_string(thread) + "/cwd"
                                              : DescriptorFile(thread, static_cast<std::uint64_t>(base));
    return (std::filesystem::path(LinkTarget(proc)) / given).lexically_normal().string();
}

std::uint64_t InodeOf(const std::string &path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) == 0 ? found.st_ino : 0;
}

std::string Hex(const std::string &bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const char c : bytes) {
        digits += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4];
        digits += "0123456789abcdef"[static_cast<unsigned char>(c) & 15];
    }
    return digits;
}

// What a stopped thread is about to do.
struct Met {
    const Call *call = nullptr;
    Arguments arguments = {};
    std::string path; // empty: of no interest
    std::uint64_t At(int index) const { return arguments[static_cast<std::size_t>(index)]; }
};

// An open counts only where it makes a file or empties one, as a folder that is there is not made.
bool Changes(const Met &met) {
    const std::string name = met.call->name;
    struct stat found {};
    const bool exists = ::lstat(met.path.c_str(), &found) == 0;
    if (name != "open") {
        return name != "mkdir" || !exists;
    }
    const auto flags = static_cast<int>(met.At(met.call->value));
    return (flags & O_TMPFILE) == O_TMPFILE || (exists ? (flags & O_TRUNC) != 0 : (flags & O_CREAT) != 0);
}

Met Meet(pid_t thread, const user_regs_struct &registers) {
    Met met;
    for (const Call &call : kCalls) {
        if (static_cast<std::uint64_t>(call.number) == registers.orig_rax) {
            met.call = &call;
        }
    }
    if (met.call == nullptr) {
        return met;
    }
    met.arguments = {registers.rdi, registers.rsi, registers.rdx, registers.r10, registers.r8, registers.r9};
    met.path = met.call->descriptor != kNone
                   ? LinkTarget(DescriptorFile(thread, met.At(met.call->descriptor)))
                   : PathOf(thread, met.arguments, met.call->folder, met.call->path);
    if (!met.path.starts_with(gAsked.under + "/") || !Changes(met)) {
        met.path.clear();
    }
    return met;
}

// The line of a call but for its result.
std::string Line(pid_t thread, const Met &met) {
    const Call &call = *met.call;
    std::string line = std::string(R"({"call": ")") + call.name + R"(", "path": ")" + Hex(met.path) + '"';
    if (call.descriptor != kNone) {
        line += R"(, "inode": )" + std::to_string(InodeOf(DescriptorFile(thread, met.At(call.descriptor))));
    }
    if (call.otherPath != kNone) {
        const bool isTarget = std::strcmp(call.name, "symlink") == 0;
        line += R"(, "other": ")" +
                Hex(isTarget ? Text(thread, met.At(call.otherPath))
                             : PathOf(thread, met.arguments, call.otherFolder, call.otherPath)) +
                '"';
    }
    if (call.bytes != kNone) {
        line += R"(, "bytes": ")" + Hex(Memory(thread, met.At(call.bytes), met.At(call.bytes + 1))) + '"';
        if (call.number == SYS_pwrite64) {
            line += R"(, "offset": )" + std::to_string(met.At(call.bytes + 2));
        }
    }
    if (call.value != kNone) {
        line += R"(, "value": )" + std::to_string(met.At(call.value));
    }
    return line;
}

bool IsAtFault() {
    return gAsked.deed != Deed::None && (gAsked.forEver ? gCount >= gAsked.at : gCount == gAsked.at);
}

// Does to the call what was asked for. Whether the thread must stop again when it returns.
bool Strike(pid_t thread, const Met &met, user_regs_struct *registers) {
    const bool transfers = met.call->bytes != kNone;
    if (gAsked.deed == Deed::Kill) {
        ::kill(gProgram, SIGKILL);
    } else if (gAsked.deed == Deed::Fail) {
        registers->orig_rax = static_cast<std::uint64_t>(-1); // no call is made
        registers->rax = static_cast<std::uint64_t>(-gAsked.error);
        ::ptrace(PTRACE_SETREGS, thread, nullptr, registers);
    } else if (transfers && registers->rdx > 1) {
        registers->rdx /= 2;
        ::ptrace(PTRACE_SETREGS, thread, nullptr, registers);
    }
    return gAsked.deed == Deed::Half;
}

// How the thread goes on: to its next call of interest, or to the end of this one.
__ptrace_request Enter(pid_t thread) {
    user_regs_struct registers{};
    ::ptrace(PTRACE_GETREGS, thread, nullptr, &registers);
    const std::string status = "/proc/" + std::to_string(gProgram) + "/task/" + std::to_string(thread);
    if (::access(status.c_str(), F_OK) != 0) { // a program that it has started
        return PTRACE_CONT;
    }
    const Met met = Meet(thread, registers);
    if (met.path.empty()) {
        return PTRACE_CONT;
    }
    ++gCount;
    if (gAsked.record != nullptr) {
        gOpenRecords[thread] = Line(thread, met);
    }
    const bool mustStop = IsAtFault() && Strike(thread, met, &registers);
    return mustStop || gAsked.record != nullptr ? PTRACE_SYSCALL : PTRACE_CONT;
}

void Leave(pid_t thread) {
    if (gAsked.deed == Deed::Half && IsAtFault()) {
        ::kill(gProgram, SIGKILL);
    }
    if (gAsked.record == nullptr) {
        return;
    }
    user_regs_struct registers{};
    ::ptrace(PTRACE_GETREGS, thread, nullptr, &registers);
    const auto result = static_cast<std::int64_t>(registers.rax);
    std::string line = gOpenRecords[thread] + R"(, "result": )" + std::to_string(result);
    if (line.starts_with(R"({"call": "open")") && result >= 0) {
        line += R"(, "inode": )" + std::to_string(InodeOf(DescriptorFile(thread, registers.rax)));
    }
    std::fprintf(gAsked.record, "%s}\n", line.c_str());
}

[[noreturn]] void Become(char **words) {
    std::vector<sock_filter> filter = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    filter.reserve(2 * kCalls.size() + 2);
    for (const Call &call : kCalls) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(call.number), 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::raise(SIGSTOP);
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        std::perror("trace_writes: seccomp");
        ::_exit(77);
    }
    ::execvp(words[0], words);
    std::perror(words[0]);
    ::_exit(127);
}

// Until the program has ended; its status.
int Watch() {
    int status = 0;
    ::waitpid(gProgram, &status, 0);
    ::ptrace(PTRACE_SETOPTIONS, gProgram, nullptr,
             PTRACE_O_TRACESECCOMP | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                 PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    ::ptrace(PTRACE_CONT, gProgram, nullptr, nullptr);
    for (;;) {
        const pid_t thread = ::waitpid(-1, &status, __WALL);
        if (thread < 0 && errno == EINTR) {
            continue;
        }
        if (thread < 0 || (thread == gProgram && !WIFSTOPPED(status))) {
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        if (!WIFSTOPPED(status)) {
            continue;
        }
        const int signal = WSTOPSIG(status);
        __ptrace_request how = PTRACE_CONT;
        long passed = 0;
        if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_SECCOMP << 8))) {
            how = Enter(thread);
        } else if (signal == (SIGTRAP | 0x80)) {
            Leave(thread);
        } else if (signal != SIGTRAP && signal != SIGSTOP) {
            passed = signal;
        }
        ::ptrace(how, thread, nullptr, passed);
    }
}

bool Parse(char **&word) {
    for (++word; *word != nullptr && std::strncmp(*word, "--", 2) == 0; ++word) {
        const std::string option = *word;
        if (option == "--ever") {
            gAsked.forEver = true;
            continue;
        }
        const char *const value = *++word;
        if (value == nullptr) {
            return false;
        }
        const std::string text = value;
        if (option == "--under") {
            gAsked.under = text;
        } else if (option == "--record") {
            gAsked.record = std::fopen(value, "we");
        } else if (option == "--at") {
            gAsked.at = std::atol(value);
        } else if (option == "--do") {
            gAsked.error = std::atoi(value);
            gAsked.deed = text == "kill"    ? Deed::Kill
                          : text == "half"  ? Deed::Half
                          : text == "short" ? Deed::Short
                                            : Deed::Fail;
        }
    }
    return *word != nullptr && !gAsked.under.empty();
}

} // namespace

int main(int /*argc*/, char **argv) {
    char **words = argv;
    if (!Parse(words)) {
        std::fputs(
            "usage: trace_writes --under FOLDER [--record FILE] [--at N --do WHAT [--ever]] PROGRAM ...\n",
            stderr);
        return 2;
    }
    gProgram = ::fork();
    if (gProgram == 0) {
        Become(words);
    }
    struct sigaction pass {};
    pass.sa_handler = [](int signal) { ::kill(gProgram, signal); };
    ::sigaction(SIGTERM, &pass, nullptr);
    const int status = Watch();
    if (gAsked.record != nullptr) {
        std::fclose(gAsked.record);
    }
    ::dprintf(3, "%ld\n", gCount);
    return status;
}
#else
int main() {
    return 77;
}
#endif
