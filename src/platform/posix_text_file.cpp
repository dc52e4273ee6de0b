#include "platform/text_file.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include "platform/posix_file.h"
#include "platform/run_time_error.h"

namespace pelvan {
namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr char kSeparator = '/';

bool directory_exists(const std::string& path) {
    const auto parent = std::filesystem::path(path).parent_path();
    std::error_code ignored;
    return parent.empty() || std::filesystem::is_directory(parent, ignored);
}

class FileReader : public TextReader {
  public:
    explicit FileReader(const std::string& path) : path_(path) {
        std::error_code ignored;
        const auto kind = std::filesystem::status(path, ignored).type();
        if (kind == std::filesystem::file_type::not_found)
            throw_file_error(directory_exists(path) ? ENOENT : ENOTDIR, path);
        // A directory opens like a file and fails later; a pipe would keep us waiting.
        if (kind != std::filesystem::file_type::regular && kind != std::filesystem::file_type::none)
            throw_file_error(EISDIR, path);
        stream_.open(path, std::ios::binary);
        if (!stream_) throw_file_error(errno, path);
    }

    std::string readline() override {
        std::string line;
        if (AtEndOfStream()) throw RunTimeError(error_number::kInputPastEnd, path_);
        std::getline(stream_, line);
        check();
        if (line.ends_with('\r')) line.pop_back();
        ++line_;
        return line;
    }

    bool AtEndOfStream() override {
        const bool at_end =
            !stream_.is_open() || stream_.peek() == std::ifstream::traits_type::eof();
        check();
        return at_end;
    }

    int Line() const override { return line_; }
    void Close() override { stream_.close(); }

  private:
    void check() const {
        if (stream_.bad()) throw_file_error(EIO, path_);
    }

    std::string path_;
    std::ifstream stream_;
    int line_ = 1;
};

class FileWriter : public TextWriter {
  public:
    FileWriter(const std::string& path, bool overwrite) : path_(path) {
        const int error = file_.open(path, O_WRONLY | O_CREAT | (overwrite ? O_TRUNC : O_EXCL));
        if (error == EEXIST) throw RunTimeError(error_number::kFileExists, path);
        // Only a directory can be missing where a missing file is created.
        if (error != 0) throw_file_error(error == ENOENT ? ENOTDIR : error, path);
    }

    void writeline(const std::string& text) override {
        if (const int error = file_.write_all(text + kLineEnd)) throw_file_error(error, path_);
    }

    void Close() override {
        if (const int error = file_.close()) throw_file_error(error, path_);
    }

  private:
    std::string path_;
    PosixFile file_;
};

} // namespace

std::unique_ptr<TextWriter> CreateTextFile(const std::string& path, bool overwrite) {
    return std::make_unique<FileWriter>(path, overwrite);
}

bool fileexists(const std::string& path) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

std::unique_ptr<TextReader> opentextfile(const std::string& path) {
    return std::make_unique<FileReader>(path);
}

void append_lines(const std::string& path, const std::string* lines, std::size_t count, bool sync) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text.append(lines[i]).append(kLineEnd);
    PosixFile file;
    int error = file.open(path, O_WRONLY | O_CREAT | O_APPEND);
    if (error == ENOENT) error = ENOTDIR;
    std::uintmax_t size_before = 0;
    if (error == 0) error = file.size(size_before);
    if (error != 0) throw_file_error(error, path);
    error = file.write_all(text);
    if (error == 0 && sync) error = file.sync();
    // The caller may try again: no line must then stand there torn or twice.
    if (error != 0) file.truncate(size_before);
    if (error == 0) error = file.close();
    if (error != 0) throw_file_error(error, path);
}

bool can_append(const std::string& path) {
    PosixFile file;
    const int error = file.open(path, O_WRONLY | O_APPEND);
    if (error != ENOENT) return error == 0;
    const int created = file.open(path, O_WRONLY | O_CREAT | O_EXCL);
    if (created != 0) return created == EEXIST; // a link to a file that is still to be made
    file.close();
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    return true;
}

void append_line(const std::string& path, const std::string& line) {
    append_lines(path, &line, 1, false);
}

std::string path_in(const std::string& directory, const std::string& name) {
    return directory + kSeparator + name;
}

} // namespace pelvan
