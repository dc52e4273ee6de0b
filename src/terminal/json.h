// Values as JSON text, well-formed by construction: texts of any bytes are escaped to ASCII,
// numbers that JSON has not become null.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace pelvan {

class Json {
  public:
    Json() = default; // null
    Json(bool value) : value_(value) {}
    Json(int value) : value_(static_cast<double>(value)) {}
    Json(double value) : value_(value) {}
    Json(std::string value) : value_(std::move(value)) {}
    Json(std::string_view value) : value_(std::string(value)) {}
    Json(const char* value) : value_(std::string(value)) {}
    template <class Value> Json(const std::optional<Value>& value) {
        if (value) *this = Json(*value);
    }
    template <class Value> Json(const std::vector<Value>& values) : value_(Array()) {
        for (const Value& value : values)
            add(Json(value));
    }

    [[nodiscard]] static Json array() { return Json(Array()); }
    [[nodiscard]] static Json object() { return Json(Object()); }

    /// Appends to an array, or a member to an object; the value itself.
    Json& add(Json value);
    Json& set(const std::string& key, Json value);

    /// One line, without its end.
    [[nodiscard]] std::string text() const;

  private:
    using Array = std::vector<Json>;
    using Object = std::vector<std::pair<std::string, Json>>;
    explicit Json(Array&& values) : value_(std::move(values)) {}
    explicit Json(Object&& members) : value_(std::move(members)) {}
    void append_to(std::string& out) const;

    std::variant<std::nullptr_t, bool, double, std::string, Array, Object> value_ = nullptr;
};

} // namespace pelvan
