#pragma once
// Statements whose results a connection will be asked for, in a known order, run ahead of time
// on further connections to the same database, so that the server answers the next ones while
// the caller is busy with the current one. Each statement still runs exactly once, with its
// own text; only when it runs changes. Internal to ado/: Connection::ReadAhead is the way in.
//
// Memory stays within the window: a statement's text is made when it is about to run, and
// only the results of the next `window` statements are ever held.
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ado/Odbc.h"

namespace kitra::ado {

// The text of statement number i (0-based) of those expected.
using StatementAt = std::function<std::string(std::size_t)>;

class ReadAheadRunner {
public:
    struct Link {
        std::string connectionString;
        long connectionTimeout = 15;
        long commandTimeout = 30;
    };

    // Starts `connections` threads, each with a connection of its own opened like `link`,
    // running statements 0 .. count-1 in order, never more than `window` ahead of the caller.
    ReadAheadRunner(Link link, std::size_t count, StatementAt statementAt, std::size_t connections,
                    std::size_t window);
    // Stops: a statement running now is waited for (it ends by its command time-out at the
    // latest); none is started.
    ~ReadAheadRunner();
    ReadAheadRunner(const ReadAheadRunner&) = delete;
    ReadAheadRunner& operator=(const ReadAheadRunner&) = delete;

    // What happened to a statement run ahead.
    struct Outcome {
        odbc::ResultRows rows;
        std::exception_ptr error;  // the statement's failure, to be raised where it is asked for
        bool linkLost = false;     // the failure says the link to the server is gone
    };

    // The outcome of `statement` when it is one of the next `window` expected (those expected
    // before it and never asked for are passed over); waits for it if it is still running.
    // Nothing when the statement is not expected there, or nothing will run it ahead any more:
    // the caller runs it itself.
    std::optional<Outcome> Take(const std::string& statement);

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    // One place of the window, reused for statement i, i + window, i + 2 window, ...
    struct Slot {
        std::size_t index = kNone;  // the statement it holds (claimed by a worker)
        bool running = false;
        bool done = false;
        std::string statement;
        Outcome outcome;
    };

    Slot& SlotOf(std::size_t index) { return slots_[index % slots_.size()]; }
    void Work();

    bool CanClaim();
    void WakeWorkers(std::size_t room);

    Link link_;
    std::size_t count_;
    StatementAt statementAt_;
    std::vector<Slot> slots_;
    // Workers that wait for room in the window are woken once this many statements can be
    // claimed (a quarter of the window), or at once when the caller would otherwise wait: each
    // wake then runs a batch of statements rather than one.
    std::size_t wakeRoom_;
    std::mutex mutex_;
    // Two signals, each sent only to whom it concerns and only when it is waited for: every wake
    // of a thread that finds nothing to do is two thread switches, which cost as much as a
    // statement's own reading.
    std::condition_variable claimable_;  // workers: a statement may be claimed, or stop
    std::condition_variable finished_;   // the caller: the statement it waits for has run
    std::size_t cursor_ = 0;   // the next statement the caller may ask for
    std::size_t next_ = 0;     // the next statement a worker may claim
    std::size_t working_ = 0;  // workers still able to run statements
    std::size_t idle_ = 0;     // workers waiting for a statement to claim
    std::size_t awaited_ = kNone;  // the statement the caller waits for
    bool stopping_ = false;
    std::vector<std::thread> workers_;
};

}  // namespace kitra::ado
