// A folder for one test's files, removed with everything in it.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class temporary_folder {
  public:
    temporary_folder() {
        std::string name = (std::filesystem::temp_directory_path() / "kiv-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder: " + name);
        path = name;
    }
    ~temporary_folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    temporary_folder(const temporary_folder &) = delete;
    temporary_folder &operator=(const temporary_folder &) = delete;

    std::string operator/(const std::string &name) const { return path + "/" + name; }

    std::string path;
};

inline void put_file(const std::string &path, const std::string &contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

inline std::string get_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
