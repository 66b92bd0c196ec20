#include "platform/wire.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

// A pipe that can be written at all takes so many bytes at once without blocking.
constexpr size_t least_pipe = 512;

bool ready(int descriptor, short events) {
    pollfd asked{descriptor, events, 0};
    return ::poll(&asked, 1, 0) > 0;
}

struct found_addresses {
    addrinfo *first = nullptr;
    std::string error;
    found_addresses(const std::string &address, uint16_t port, int flags) {
        addrinfo wanted{};
        wanted.ai_family = AF_UNSPEC;
        wanted.ai_socktype = SOCK_STREAM;
        wanted.ai_flags = flags | AI_NUMERICSERV;
        const int code = ::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &wanted, &first);
        if (code != 0) error = address + ": " + ::gai_strerror(code);
    }
    ~found_addresses() {
        if (first != nullptr) ::freeaddrinfo(first);
    }
    found_addresses(const found_addresses &) = delete;
    found_addresses &operator=(const found_addresses &) = delete;
};

uint16_t port_of(int socket) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size) != 0) return 0;
    const in_port_t port = address.ss_family == AF_INET6
                               ? reinterpret_cast<const sockaddr_in6 &>(address).sin6_port
                               : reinterpret_cast<const sockaddr_in &>(address).sin_port;
    return ntohs(port);
}

// Answers of a few bytes must not wait for more of them.
void send_at_once(int socket) {
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

} // namespace

wire wire::standard_streams() { return {STDIN_FILENO, STDOUT_FILENO, false}; }

wire wire::connect(const std::string &address, uint16_t port) {
    const found_addresses found(address, port, 0);
    for (const addrinfo *a = found.first; a != nullptr; a = a->ai_next) {
        const int made = ::socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC, a->ai_protocol);
        if (made < 0) continue;
        if (::connect(made, a->ai_addr, a->ai_addrlen) == 0) {
            send_at_once(made);
            return {made, made, true};
        }
        ::close(made);
    }
    return {};
}

void wire::swap(wire &other) noexcept {
    std::swap(input, other.input);
    std::swap(output, other.output);
    std::swap(owned, other.owned);
}

int64_t wire::read(void *buffer, size_t size) {
    if (input < 0) return -1;
    if (size == 0 || (!owned && !ready(input, POLLIN))) return 0;
    const ssize_t got = owned ? ::recv(input, buffer, size, MSG_DONTWAIT) : ::read(input, buffer, size);
    if (got > 0) return got;
    return got < 0 && (errno == EINTR || errno == EAGAIN) ? 0 : -1;
}

int64_t wire::write(const void *bytes, size_t size) {
    if (output < 0) return -1;
    if (size == 0 || (!owned && !ready(output, POLLOUT))) return 0;
    const ssize_t put = owned ? ::send(output, bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL)
                              : ::write(output, bytes, std::min(size, least_pipe));
    if (put >= 0) return put;
    return errno == EINTR || errno == EAGAIN ? 0 : -1;
}

void wire::end_writing() {
    if (owned && output >= 0) ::shutdown(output, SHUT_WR);
}

void wire::close() {
    if (owned && input >= 0) ::close(input);
    input = output = -1;
    owned = true;
}

std::string wire_listener::open_one(const std::string &address, uint16_t port) {
    const found_addresses found(address, port, AI_PASSIVE);
    if (found.first == nullptr) return found.error;
    const addrinfo &a = *found.first;
    const int made = ::socket(a.ai_family, a.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, a.ai_protocol);
    const int on = 1;
    if (made >= 0) {
        // The port of a run that has just ended is free for the next one.
        ::setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        if (a.ai_family == AF_INET6) ::setsockopt(made, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
    }
    if (made < 0 || ::bind(made, a.ai_addr, a.ai_addrlen) != 0 || ::listen(made, 4) != 0) {
        const std::string reason = std::strerror(errno);
        if (made >= 0) ::close(made);
        return address + ":" + std::to_string(port) + ": " + reason;
    }
    sockets.push_back(made);
    own_port = port_of(made);
    return {};
}

std::string wire_listener::open(const std::string &address, uint16_t port) {
    close();
    if (!address.empty()) return open_one(address, port);
    std::string reason = open_one("127.0.0.1", port);
    if (reason.empty()) (void)open_one("::1", own_port);
    return reason;
}

wire wire_listener::accept() {
    for (const int each : sockets) {
        const int made = ::accept4(each, nullptr, nullptr, SOCK_CLOEXEC);
        if (made < 0) continue;
        send_at_once(made);
        return {made, made, true};
    }
    return {};
}

void wire_listener::close() {
    for (const int each : sockets) ::close(each);
    sockets.clear();
    own_port = 0;
}

bool wait_for_wires(const wire_listener *listener, const std::vector<wire_wanted> &wires, int milliseconds) {
    std::vector<pollfd> asked;
    if (listener != nullptr)
        for (const int each : listener->sockets) asked.push_back({each, POLLIN, 0});
    const size_t listening = asked.size();
    for (const wire_wanted &w : wires) {
        if (!w.which->is_open()) continue;
        asked.push_back({w.which->input, POLLIN, 0});
        if (w.to_write) asked.push_back({w.which->output, POLLOUT, 0});
    }
    if (::poll(asked.data(), asked.size(), milliseconds) <= 0) return false;
    return std::any_of(asked.data(), asked.data() + listening,
                       [](const pollfd &p) { return p.revents != 0; });
}

} // namespace platform
