// Text files of CR LF lines, read and written one whole line at a time. Failures are RunTimeErrors
// with the classic file numbers: 53 not found, 61 disk full, 62 past the end, 70 permission denied,
// 75 path/file access, 76 path not found.
#pragma once

#include <memory>
#include <string>

namespace pelvan {

class TextReader {
  public:
    virtual ~TextReader() = default;
    /// The next line without its end (CR LF or LF); 62 past the end.
    virtual std::string readline() = 0;
    virtual bool AtEndOfStream() = 0;
    /// 1-based number of the line that the next `readline` returns.
    virtual int Line() const = 0;
    virtual void Close() = 0;
};

class TextWriter {
  public:
    virtual ~TextWriter() = default;
    /// Writes the line and CR LF; handed to the system before it returns.
    virtual void writeline(const std::string& text) = 0;
    virtual void Close() = 0;
};

/// Creates the file, or empties it when `overwrite`; 58 when it exists and may not be overwritten.
[[nodiscard]] std::unique_ptr<TextWriter> CreateTextFile(const std::string& path, bool overwrite);
[[nodiscard]] bool fileexists(const std::string& path);
[[nodiscard]] std::unique_ptr<TextReader> opentextfile(const std::string& path);

/// Opens for appending (creating when missing), writes the lines, each with CR LF, and closes; the
/// data is on the disk (not only with the system) when `sync`. A failure leaves the file as it was.
void append_lines(const std::string& path, const std::string* lines, std::size_t count, bool sync);
/// Whether lines could be appended now, asked without leaving a trace: a file that is missing stays
/// missing.
[[nodiscard]] bool can_append(const std::string& path);
void append_line(const std::string& path, const std::string& line);

/// `directory` + the system's separator + `name`.
[[nodiscard]] std::string path_in(const std::string& directory, const std::string& name);

} // namespace pelvan
