// Another program that is fed through pipes.
#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {

// Whether a program of that name is found in PATH.
bool is_program(const std::string &name);

class child_process {
  public:
    child_process() = default;
    ~child_process(); // of a program that still runs: killed
    child_process(const child_process &) = delete;
    child_process &operator=(const child_process &) = delete;

    // Starts a program of PATH; it finds its inputs as descriptors 3, 4 and so on. Why not, else empty.
    std::string start(const std::vector<std::string> &command, int inputs);
    // Waits until the program has taken everything; false: it takes no more. One thread an input.
    bool write(int input, const void *bytes, size_t size);
    void close_input(int input);
    // Waits for the program's end. Empty: all went well; else the first line that it had to say about it.
    std::string wait();
    void kill();

  private:
    std::string first_words() const;

    pid_t process = -1;
    int words = -1; // a file in memory that takes its standard error stream
    std::vector<int> pipes;
};

} // namespace platform
