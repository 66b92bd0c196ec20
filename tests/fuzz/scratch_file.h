// One temporary file, made anew for every input and gone with the process.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

class scratch_file {
  public:
    explicit scratch_file(const char *suffix)
        : name((std::filesystem::temp_directory_path() / ("kiv-fuzz-" + std::to_string(getpid()) + suffix))
                   .string()) {}
    ~scratch_file() {
        std::error_code ignored;
        std::filesystem::remove(name, ignored);
    }
    scratch_file(const scratch_file &) = delete;
    scratch_file &operator=(const scratch_file &) = delete;

    const std::string &path() const { return name; }

    void fill(const void *data, size_t size) {
        std::FILE *file = std::fopen(name.c_str(), "wb");
        if (file == nullptr) std::abort();
        if (size != 0 && std::fwrite(data, 1, size, file) != size) std::abort();
        std::fclose(file);
    }

  private:
    std::string name;
};
