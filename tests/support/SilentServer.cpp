#include "tests/support/SilentServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

namespace kitra::test {
namespace {

sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

}  // namespace

SilentServer::SilentServer(Silence silence) {
    listener_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = Loopback(0);
    // Nobody ever accepts: the system completes the handshakes while the queue has room.
    // With a queue of one, filled at once, every further request is dropped unanswered.
    const int backlog = silence == Silence::AfterConnecting ? 64 : 0;
    if (listener_ < 0 || bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener_, backlog) != 0) {
        throw std::runtime_error("cannot listen on a loopback port");
    }
    socklen_t length = sizeof address;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    if (silence == Silence::BeforeConnecting) {
        for (int& filler : fillers_) {
            filler = socket(AF_INET, SOCK_STREAM, 0);
            fcntl(filler, F_SETFL, O_NONBLOCK);
            const sockaddr_in target = Loopback(port_);
            connect(filler, reinterpret_cast<const sockaddr*>(&target), sizeof target);
        }
    }
}

SilentServer::~SilentServer() {
    for (const int filler : fillers_) {
        if (filler >= 0) close(filler);
    }
    if (listener_ >= 0) close(listener_);
}

}  // namespace kitra::test
