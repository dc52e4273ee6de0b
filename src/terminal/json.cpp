#include "terminal/json.h"

#include <cmath>

#include "text/numbers.h"
#include "text/utf16.h"

namespace pelvan {
namespace {

void append_quoted(std::string& out, const std::string& text) {
    out += '"';
    const std::string words = to_utf16(text, ByteOrder::BigEndian);
    for (std::size_t i = 2; i + 1 < words.size(); i += 2) { // behind the mark
        const unsigned unit =
            static_cast<unsigned char>(words[i]) * 256U + static_cast<unsigned char>(words[i + 1]);
        if (unit == '"' || unit == '\\')
            out += {'\\', static_cast<char>(unit)};
        else if (unit >= ' ' && unit < 0x7F)
            out += static_cast<char>(unit);
        else
            out += "\\u" + hex_text(unit, 4);
    }
    out += '"';
}

std::string number_text(double value) {
    return std::isfinite(value) ? plain_number(value) : "null";
}

} // namespace

Json& Json::add(Json value) {
    std::get<Array>(value_).push_back(std::move(value));
    return *this;
}

Json& Json::set(const std::string& key, Json value) {
    std::get<Object>(value_).emplace_back(key, std::move(value));
    return *this;
}

std::string Json::text() const {
    std::string out;
    append_to(out);
    return out;
}

void Json::append_to(std::string& out) const {
    if (const auto* flag = std::get_if<bool>(&value_)) {
        out += *flag ? "true" : "false";
    } else if (const auto* number = std::get_if<double>(&value_)) {
        out += number_text(*number);
    } else if (const auto* text = std::get_if<std::string>(&value_)) {
        append_quoted(out, *text);
    } else if (const auto* values = std::get_if<Array>(&value_)) {
        out += '[';
        for (const Json& value : *values) {
            if (&value != &values->front()) out += ',';
            value.append_to(out);
        }
        out += ']';
    } else if (const auto* members = std::get_if<Object>(&value_)) {
        out += '{';
        for (const auto& [key, value] : *members) {
            if (&value != &members->front().second) out += ',';
            append_quoted(out, key);
            out += ':';
            value.append_to(out);
        }
        out += '}';
    } else {
        out += "null";
    }
}

} // namespace pelvan
