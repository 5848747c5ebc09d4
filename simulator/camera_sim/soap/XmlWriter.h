/// @file
/// Writes the body of an answer and wraps it into an envelope.
#ifndef CAMERA_SIM_SOAP_XMLWRITER_H
#define CAMERA_SIM_SOAP_XMLWRITER_H

#include <array>
#include <concepts>
#include <string>
#include <string_view>
#include <vector>

#include "camera_sim/soap/Namespaces.h"

namespace camera_sim {

/// Text with the five characters escaped that XML reserves; control characters that XML does not
/// allow become spaces.
std::string EscapeXml(std::string_view text);

/// Elements in order of writing. Prefixes come from the style; the envelope declares those used.
/// Not safe for use by several threads at once.
class CXmlWriter {
 public:
    /// @p style must outlive the writer.
    CXmlWriter(const PrefixStyle& style, bool pretty);

    /// An open element; its destruction closes it, innermost first.
    class CScope {
     public:
        CScope(CXmlWriter& writer, Ns ns, std::string_view name) : writer_(writer) {
            writer_.Open(ns, name);
        }
        ~CScope() { writer_.Close(); }
        CScope(const CScope&) = delete;
        CScope& operator=(const CScope&) = delete;

     private:
        CXmlWriter& writer_;
    };

    /// Attributes of the element opened last, before any content.
    void Attribute(std::string_view name, std::string_view value);
    void Attribute(std::string_view name, bool value) {
        Attribute(name, std::string_view(value ? "true" : "false"));
    }
    void Attribute(std::string_view name, const char* value) {
        Attribute(name, std::string_view(value));
    }
    void Attribute(std::string_view name, int value) { Attribute(name, std::to_string(value)); }

    void Text(std::string_view text);
    /// A complete element that declares its own namespaces.
    void Raw(std::string_view xml);

    /// An element that holds only text. No implicit conversions: a pointer is not a truth value.
    void Element(Ns ns, std::string_view name, std::string_view text);
    void Element(Ns ns, std::string_view name, const char* text) {
        Element(ns, name, std::string_view(text));
    }
    template <std::same_as<bool> T>
    void Element(Ns ns, std::string_view name, T value) {
        Element(ns, name, std::string_view(value ? "true" : "false"));
    }
    template <std::same_as<int> T>
    void Element(Ns ns, std::string_view name, T value) {
        Element(ns, name, std::to_string(value));
    }
    template <std::same_as<double> T>
    void Element(Ns ns, std::string_view name, T value) {
        Element(ns, name, NumberText(value));
    }

    /// A qualified name for use as a value.
    std::string QualifiedName(Ns ns, std::string_view name);

    /// What was written so far belongs into the envelope's header. All elements must be closed.
    void EndHeader();

    /// Throws away what was written.
    void Clear();

    /// The whole envelope around what was written. All elements must be closed.
    std::string Envelope(bool xmlProlog) const;

    static std::string NumberText(double value);

 private:
    struct OpenElement {
        std::string qualifiedName;
        Ns defaultNamespace;
        bool hasChildren;
    };

    void Open(Ns ns, std::string_view name);
    void Close();
    void CloseStartTag();
    void NewLine(std::size_t depth);

    const PrefixStyle& style_;
    const bool pretty_;
    bool startTagOpen_ = false;
    std::array<bool, kNamespaceCount> used_{};
    std::vector<OpenElement> open_;
    std::string header_;
    std::string text_;
};

}  // namespace camera_sim

#endif
