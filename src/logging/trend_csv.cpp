#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "logging/trend.h"
#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

std::string time_cell(double time_ms) {
    const LocalTime time = calendar_time(time_ms);
    return iso_date_text(time) + " " + time_ms_text(time);
}

std::string title_cell(const TrendLabel& label) {
    const std::string title = label.name + (label.unit.empty() ? "" : " [" + label.unit + "]");
    if (title.find_first_of(",\"\r\n") == std::string::npos) return title;
    std::string quoted = "\"";
    for (const char c : title)
        quoted += c == '"' ? std::string(2, c) : std::string(1, c);
    return quoted + '"';
}

} // namespace

class TrendCsv : public TrendExport {
  public:
    TrendCsv(const Trend& trend, const std::string& path)
        : trend_(trend), path_(path), file_(CreateTextFile(path, true)),
          first_(trend.passes_ - trend.times_.size()), next_(first_), end_(trend.passes_) {
        for (const int row : trend.rows())
            add_column(static_cast<std::size_t>(row));
    }
    TrendCsv(const TrendCsv&) = delete;
    TrendCsv& operator=(const TrendCsv&) = delete;
    ~TrendCsv() override {
        if (finished_) return;
        file_.reset();
        std::remove(path_.c_str());
    }

    bool write_some(std::size_t passes) override {
        if (!std::exchange(header_written_, true)) write_header();
        for (; passes > 0 && next_ < end_; --passes) {
            const std::size_t oldest = trend_.passes_ - trend_.times_.size();
            next_ = std::max(next_, oldest);
            if (next_ >= end_) break;
            write_pass(next_++ - oldest);
        }
        if (next_ < end_) return true;
        file_->Close();
        finished_ = true;
        return false;
    }

    [[nodiscard]] double share() const override {
        if (end_ == first_) return 1;
        return static_cast<double>(next_ - first_) / static_cast<double>(end_ - first_);
    }

  private:
    struct Column {
        std::size_t row;
        std::string source;
        std::string title;
    };

    void add_column(std::size_t row) {
        const Trend::Column& column = trend_.columns_[row];
        columns_.push_back({row, column.source, title_cell(column.label)});
    }

    void write_header() {
        std::string line = "Time";
        for (const Column& each : columns_)
            line += "," + each.title;
        file_->writeline(line);
    }

    void write_pass(std::size_t index) {
        std::string line = time_cell(trend_.time_at(index));
        for (const Column& each : columns_) {
            const Trend::Column& column = trend_.columns_[each.row];
            line += ',';
            // The row may have gone, or have become another, since the header was written.
            if (column.values.empty() || column.source != each.source) continue;
            const double value = column.values[trend_.slot(index)];
            if (!std::isnan(value)) line += plain_number(value);
        }
        file_->writeline(line);
    }

    const Trend& trend_;
    std::string path_;
    std::unique_ptr<TextWriter> file_;
    std::vector<Column> columns_;
    std::size_t first_; // numbers of passes, counted from the first one ever begun
    std::size_t next_;
    std::size_t end_;
    bool header_written_ = false;
    bool finished_ = false;
};

std::unique_ptr<TrendExport> Trend::export_csv(const std::string& path) const {
    return std::make_unique<TrendCsv>(*this, path);
}

} // namespace pelvan
