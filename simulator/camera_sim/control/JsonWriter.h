/// @file
/// Writes JSON texts.
#ifndef CAMERA_SIM_CONTROL_JSONWRITER_H
#define CAMERA_SIM_CONTROL_JSONWRITER_H

#include <concepts>
#include <string>
#include <string_view>

namespace camera_sim {

/// Values in order of writing. Bytes that are not UTF-8 become U+FFFD.
class JsonWriter {
 public:
    /// An open object or array; its destruction closes it, innermost first.
    class Scope {
     public:
        Scope(JsonWriter& writer, char open, char close) : writer_(writer), close_(close) {
            writer_.Begin();
            writer_.text_ += open;
            writer_.first_ = true;
        }
        ~Scope() {
            writer_.text_ += close_;
            writer_.first_ = false;
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

     private:
        JsonWriter& writer_;
        const char close_;
    };

    [[nodiscard]] Scope Object() { return {*this, '{', '}'}; }
    [[nodiscard]] Scope Array() { return {*this, '[', ']'}; }
    /// Names the value that comes next.
    JsonWriter& Key(std::string_view name);
    void Value(std::string_view text);
    void Value(const char* text) { Value(std::string_view(text)); }
    template <std::same_as<bool> T>
    void Value(T value) {
        Begin();
        text_ += value ? "true" : "false";
    }
    template <std::integral T>
    requires(!std::same_as<T, bool>) void Value(T value) {
        Begin();
        text_ += std::to_string(value);
    }
    /// Finite numbers only.
    void Value(double value);
    const std::string& Text() const { return text_; }

 private:
    void Begin();
    void AppendString(std::string_view text);

    std::string text_;
    bool first_ = true;
};

}  // namespace camera_sim

#endif
