// Runs one program (the import: kitra-host execute) and measures it from outside: wall time,
// peak resident memory (the kernel's own count for the child), and when each importer started,
// read from the status lines the program prints as it goes.
#include "tools/bench/Bench.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace kitra::bench {
namespace {

using SteadyClock = std::chrono::steady_clock;

double SecondsBetween(SteadyClock::time_point from, SteadyClock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

// "A importar Clientes" starts an importer; "A importar Clientes: 10/200" is its progress.
bool IsImporterStart(const std::string& line) {
    static const std::regex progress(R"(: [0-9]+/[0-9]+$)");
    return line.starts_with("A importar ") && !std::regex_search(line, progress);
}

// The compaction after the last restaurant is a phase of its own.
bool IsCompactionStart(const std::string& line) {
    return line.starts_with("Vai-se proceder à compactação");
}

// " - Clientes: 5000": one count of the restaurant's summary.
std::optional<std::pair<std::string, long>> ReportedCount(const std::string& line) {
    static const std::regex count(R"(^ - (.+): ([0-9]+)$)");
    std::smatch match;
    if (!std::regex_match(line, match, count)) return std::nullopt;
    return std::make_pair(match[1].str(), std::stol(match[2].str()));
}

}  // namespace

namespace {

// The runs are started by a small process of their own, forked when this program is still
// small: the kernel counts a process's peak memory from the image it was forked from, so a run
// forked after the floors had read their rows would show this program's peak as its own.
struct Launcher {
    pid_t pid = -1;
    int requests = -1;     // arguments, each ended by a nul, a run ended by one more
    FILE* replies = nullptr;  // the run's output, then the end line
};

Launcher& TheLauncher() {
    static Launcher launcher;
    return launcher;
}

// Begins the line that ends a run's output; it cannot occur in a program's text output.
constexpr char kEndMark = '\x01';

void WriteAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(fd, data, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            _exit(1);
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
}

// The launcher's life: each request is one run, its output passed on as it comes, then
// "<mark>end EXIT MAXRSS_KB USER_US SYSTEM_US". Ends when this program closes the requests.
[[noreturn]] void ServeRuns(int requestFd, int replyFd) {
    FILE* in = fdopen(requestFd, "r");
    for (;;) {
        std::vector<std::string> command;
        std::string part;
        int c;
        while ((c = std::fgetc(in)) != EOF) {
            if (c != 0) {
                part += static_cast<char>(c);
            } else if (part.empty()) {
                break;
            } else {
                command.push_back(std::exchange(part, {}));
            }
        }
        if (c == EOF) _exit(0);
        int pipeEnds[2];
        if (pipe(pipeEnds) != 0) _exit(1);
        const pid_t child = fork();
        if (child < 0) _exit(1);
        if (child == 0) {
            dup2(pipeEnds[1], STDOUT_FILENO);
            close(pipeEnds[0]);
            close(pipeEnds[1]);
            close(requestFd);
            close(replyFd);
            std::vector<char*> argv;
            for (const std::string& argument : command) argv.push_back(const_cast<char*>(argument.c_str()));
            argv.push_back(nullptr);
            execv(argv[0], argv.data());
            std::fprintf(stderr, "cannot run %s: %s\n", argv[0], std::strerror(errno));
            _exit(127);
        }
        close(pipeEnds[1]);
        char buffer[65536];
        char last = '\n';
        for (;;) {
            const ssize_t got = read(pipeEnds[0], buffer, sizeof buffer);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) break;
            WriteAll(replyFd, buffer, static_cast<std::size_t>(got));
            last = buffer[got - 1];
        }
        close(pipeEnds[0]);
        int status = 0;
        rusage usage{};
        while (wait4(child, &status, 0, &usage) < 0) {
            if (errno != EINTR) _exit(1);
        }
        const int exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        const std::string end =
            std::string(last == '\n' ? "" : "\n") + kEndMark + "end " + std::to_string(exitCode) + " " +
            std::to_string(usage.ru_maxrss) + " " +
            std::to_string(usage.ru_utime.tv_sec * 1000000L + usage.ru_utime.tv_usec) + " " +
            std::to_string(usage.ru_stime.tv_sec * 1000000L + usage.ru_stime.tv_usec) + "\n";
        WriteAll(replyFd, end.data(), end.size());
    }
}

Launcher& StartedLauncher() {
    Launcher& launcher = TheLauncher();
    if (launcher.pid > 0) return launcher;
    int requestEnds[2], replyEnds[2];
    if (pipe(requestEnds) != 0 || pipe(replyEnds) != 0)
        throw std::runtime_error(std::string("pipe: ") + std::strerror(errno));
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid < 0) throw std::runtime_error(std::string("fork: ") + std::strerror(errno));
    if (pid == 0) {
        close(requestEnds[1]);
        close(replyEnds[0]);
        ServeRuns(requestEnds[0], replyEnds[1]);
    }
    close(requestEnds[0]);
    close(replyEnds[1]);
    launcher.pid = pid;
    launcher.requests = requestEnds[1];
    launcher.replies = fdopen(replyEnds[0], "r");
    return launcher;
}

}  // namespace

void StartRunLauncher() { StartedLauncher(); }

RunResult MeasureRun(const std::vector<std::string>& command, const std::string& outputFile,
                     std::optional<long> serverPid) {
    if (command.empty()) throw std::runtime_error("no program to run");
    std::string request;
    for (const std::string& part : command) {
        if (part.empty() || part.find('\0') != std::string::npos)
            throw std::runtime_error("an empty argument cannot be passed to " + command.front());
        request += part;
        request += '\0';
    }
    request += '\0';
    Launcher& launcher = StartedLauncher();
    const ServerCpu server(serverPid);
    const SteadyClock::time_point started = SteadyClock::now();
    WriteAll(launcher.requests, request.data(), request.size());

    RunResult result;
    std::ofstream output(outputFile);
    std::string current;  // the phase running now
    SteadyClock::time_point phaseStart = started;
    const auto endPhase = [&](SteadyClock::time_point at) {
        if (!current.empty()) result.phases.push_back({current, SecondsBetween(phaseStart, at)});
    };
    char* line = nullptr;
    size_t capacity = 0;
    ssize_t length;
    bool ended = false;
    long long userMicroseconds = 0, systemMicroseconds = 0;
    while ((length = getline(&line, &capacity, launcher.replies)) >= 0) {
        const SteadyClock::time_point now = SteadyClock::now();
        std::string text(line, static_cast<std::size_t>(length));
        if (!text.empty() && text.back() == '\n') text.pop_back();
        if (!text.empty() && text.front() == kEndMark) {
            std::istringstream end(text.substr(1));
            std::string word;
            end >> word >> result.exitCode >> result.peakRssKilobytes >> userMicroseconds >> systemMicroseconds;
            ended = word == "end" && !end.fail();
            break;
        }
        output << text << '\n';
        if (auto reported = ReportedCount(text)) result.reported.push_back(std::move(*reported));
        if (IsImporterStart(text) || IsCompactionStart(text)) {
            endPhase(now);
            current = IsCompactionStart(text) ? "Compactação" : text.substr(std::strlen("A importar "));
            phaseStart = now;
        }
    }
    std::free(line);
    if (!ended) throw std::runtime_error("the process that starts the runs ended unexpectedly");
    const SteadyClock::time_point finished = SteadyClock::now();
    endPhase(finished);
    result.wallSeconds = SecondsBetween(started, finished);
    result.cpuSeconds = static_cast<double>(userMicroseconds + systemMicroseconds) / 1e6;
    result.serverCpuSeconds = server.Since();
    return result;
}

std::optional<double> ProcessCpuSeconds(long pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    if (!stat || !std::getline(stat, text)) return std::nullopt;
    // The command's name, in parentheses, may hold blanks; the fields after it are plain.
    const std::size_t nameEnd = text.rfind(')');
    if (nameEnd == std::string::npos) return std::nullopt;
    std::istringstream fields(text.substr(nameEnd + 1));
    std::string field;
    unsigned long long user = 0, system = 0;
    // After the name: state (3rd field of the line) ... utime (14th), stime (15th).
    for (int index = 3; index <= 15 && fields >> field; ++index) {
        if (index == 14) user = std::stoull(field);
        if (index == 15) system = std::stoull(field);
    }
    if (!fields) return std::nullopt;
    const long ticks = sysconf(_SC_CLK_TCK);
    if (ticks <= 0) return std::nullopt;
    return static_cast<double>(user + system) / static_cast<double>(ticks);
}

double OwnCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

ServerCpu::ServerCpu(std::optional<long> pid) : pid_(pid) {
    if (pid_) before_ = Since();
}

double ServerCpu::Since() const {
    if (!pid_) return 0;
    const std::optional<double> now = ProcessCpuSeconds(*pid_);
    if (!now) throw std::runtime_error("the restaurant's server (pid " + std::to_string(*pid_) + ") cannot be read");
    return *now - before_;
}

FreshBackOffice::FreshBackOffice(std::string data) : data_(std::move(data)), kept_(data_ + ".before-run") {
    std::filesystem::remove_all(kept_);
    std::filesystem::copy(data_, kept_, std::filesystem::copy_options::recursive);
}

FreshBackOffice::~FreshBackOffice() {
    std::error_code ignored;
    std::filesystem::remove_all(kept_, ignored);
}

void FreshBackOffice::Restore() const {
    std::filesystem::remove_all(data_);
    std::filesystem::copy(kept_, data_, std::filesystem::copy_options::recursive);
}

}  // namespace kitra::bench
