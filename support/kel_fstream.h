// A file as a stream: whole files of up to 4 GiB. The destructor closes, so every early return does.
#pragma once

#include "platform/file.h"
#include "support/kel_exception.h"
#include "support/kel_stream.h"
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
    // Creates a file that must not exist yet. 1, or 0 when it exists, cannot be made, or a file is open.
    virtual int create_new(const char *path, int delete_on_close);
    // Opens a regular file that must exist; read_only 0 opens for writing too. 1, or 0.
    virtual int open(const char *path, int read_only, int delete_on_close);
    // Adopts an open handle; with owns 0 it is never closed here. 0 when a file is open.
    virtual int attach(platform::file_handle handle, int owns);
    // Closes and deletes; 0 when the stream is closed or the path is not known (the file stays).
    virtual int close_and_delete();
    // Gives the handle up without closing it; invalid_file when the stream is closed.
    virtual platform::file_handle detach();
    virtual void reset_fields();
    virtual ~kel_fstream();

  private:
    bool is_open() const { return handle != platform::invalid_file; }
    int opened(platform::file_handle result, const char *name, int delete_when_closed);

    platform::file_handle handle;
    int owns_handle;
    int delete_on_close;
    std::string path; // empty unless the stream is open
};
