#pragma once
// Statements whose results a connection will be asked for, in a known order, run ahead of time
// on further connections to the same database, so that the server answers the next ones while
// the caller is busy with the current one. Each statement still runs exactly once, with its
// own text; only when it runs changes. Internal to ado/: Connection::ReadAhead is the way in.
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ado/Odbc.h"

namespace kitra::ado {

class ReadAheadRunner {
public:
    struct Link {
        std::string connectionString;
        long connectionTimeout = 15;
        long commandTimeout = 30;
    };

    // Starts `connections` threads, each with a connection of its own opened like `link`,
    // running the statements in order, never more than `window` ahead of the caller.
    ReadAheadRunner(Link link, std::vector<std::string> statements, std::size_t connections,
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

    // The outcome of `statement` when it is the next one expected (statements expected before
    // it and never asked for are passed over); waits for it if it is still running. Nothing when
    // the statement is not expected within the window, or nothing will run it ahead any more:
    // the caller runs it itself.
    std::optional<Outcome> Take(const std::string& statement);

private:
    struct Slot {
        bool claimed = false;
        bool done = false;
        Outcome outcome;
    };

    void Work();

    Link link_;
    std::vector<std::string> statements_;
    std::size_t window_;
    std::vector<Slot> slots_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t cursor_ = 0;  // the next statement the caller may ask for
    std::size_t next_ = 0;    // the next statement a worker may claim
    std::size_t working_ = 0; // workers still able to run statements
    bool stopping_ = false;
    std::vector<std::thread> workers_;
};

}  // namespace kitra::ado
