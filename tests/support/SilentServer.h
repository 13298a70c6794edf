#pragma once
// A loopback port whose "server" never answers, for the tests of the connection's time-outs:
// either the system accepts the TCP connection and nothing is ever said on it (a hung server),
// or even the TCP handshake goes unanswered (a host that cannot be reached).
namespace kitra::test {

class SilentServer {
public:
    enum class Silence {
        AfterConnecting,  // the TCP connection is made; no greeting, no answer ever follows
        BeforeConnecting, // connection requests are dropped, as on the way to an unreachable host
    };

    explicit SilentServer(Silence silence = Silence::AfterConnecting);
    ~SilentServer();
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    int Port() const { return port_; }

private:
    int listener_ = -1;
    int fillers_[3] = {-1, -1, -1};
    int port_ = 0;
};

}  // namespace kitra::test
