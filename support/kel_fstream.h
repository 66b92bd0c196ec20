// A file as a stream: whole-buffer reads and writes that report their byte count, 32-bit positions, and a
// close that can delete the file. The destructor closes, so every early return of a user closes the file.
// Results are 1 for success and 0 for failure.
#pragma once

#include "platform/file.h"
#include "support/kel_exception.h"
#include "support/kel_stream.h"
#include <optional>
#include <string>

class kel_fstream : public kel_stream {
  public:
    kel_fstream();

    uint32_t read(void *buffer, uint32_t element_size, uint32_t count) override;
    uint32_t write(const void *buffer, uint32_t element_size, uint32_t count) override;
    int seek(int origin, int32_t offset) override;
    void rewind() override;
    uint32_t tell() override;
    uint32_t size() override;
    int close() override;

    // A file that must not exist yet, for reading and writing; never replaces one. 0 also while open.
    virtual int create_new(const std::string &file_name, int delete_when_closed);
    // A file that must exist. 0 also while open; the first file then stays open.
    virtual int open(const std::string &file_name, int read_only, int delete_when_closed);
    // Adopts an open handle, which `close` closes only when it is owned. 0 while open.
    virtual int attach(platform::file_handle open_handle, int owns);
    // 1 when closed with the file asked to be deleted; 0 when closed already, and for an attached handle,
    // which has no name: it is closed and the file stays.
    virtual int close_and_delete();
    // Gives the handle up without closing it; invalid while closed.
    virtual platform::file_handle detach();
    virtual void reset_fields();
    virtual ~kel_fstream();

  private:
    int opened(platform::file_handle new_handle, const std::string &file_name, int delete_when_closed);
    uint32_t request_bytes(uint32_t element_size, uint32_t count, int32_t failure) const;

    platform::file_handle handle;
    int owns_handle;                 // 1: `close` closes the handle; 0: it belongs to someone else
    int delete_on_close;             // 1: `close` deletes the file by its path
    std::optional<std::string> path; // only while open, and only of a file opened by name
};
