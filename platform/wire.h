// Byte streams to another program: TCP, or the standard input and output. Nothing here blocks but
// wait_for_wires and, where an address is a name, the listener's open.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace platform {

class wire {
  public:
    wire() = default;
    ~wire() { close(); }
    wire(wire &&other) noexcept { swap(other); }
    wire &operator=(wire &&other) noexcept {
        wire taken(static_cast<wire &&>(other));
        swap(taken);
        return *this;
    }

    static wire standard_streams(); // closing the wire leaves them open
    // To where somebody listens; not open: nobody does. Waits for the answer.
    static wire connect(const std::string &address, uint16_t port);
    bool is_open() const { return input >= 0; }
    explicit operator bool() const { return is_open(); }
    // Bytes transferred; 0: none at present; -1: the other side has gone.
    int64_t read(void *buffer, size_t size);
    int64_t write(const void *bytes, size_t size);
    void end_writing();                      // the other side reads to the end
    int descriptor() const { return input; } // to be watched; -1: not open
    void close();

  private:
    friend class wire_listener;
    friend bool wait_for_wires(const class wire_listener *, const std::vector<struct wire_wanted> &, int);
    wire(int input_, int output_, bool owned_) : input(input_), output(output_), owned(owned_) {}
    void swap(wire &other) noexcept;

    int input = -1, output = -1;
    bool owned = true;
};

class wire_listener {
  public:
    wire_listener() = default;
    ~wire_listener() { close(); }
    wire_listener(const wire_listener &) = delete;
    wire_listener &operator=(const wire_listener &) = delete;

    // An empty address: the loopback interface, by IPv4 and, where there is that, IPv6. Port 0: a free one.
    // Returns why it failed, or nothing.
    std::string open(const std::string &address, uint16_t port);
    bool is_open() const { return !sockets.empty(); }
    uint16_t port() const { return own_port; }
    const std::vector<int> &descriptors() const { return sockets; } // to be watched
    wire accept();                                                  // not open: nobody has come
    void close();

  private:
    friend bool wait_for_wires(const wire_listener *, const std::vector<struct wire_wanted> &, int);
    std::string open_one(const std::string &address, uint16_t port);

    std::vector<int> sockets;
    uint16_t own_port = 0;
};

struct wire_wanted {
    const wire *which;
    bool to_write; // it has something to write, too
};

// Until somebody comes, something can be read or written, a signal has come, or so many milliseconds have
// passed. The listener may be null. False: nobody comes.
bool wait_for_wires(const wire_listener *listener, const std::vector<wire_wanted> &wires, int milliseconds);

} // namespace platform
