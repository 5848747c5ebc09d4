#include "camera_sim/soap/XmlWriter.h"

#include <charconv>
#include <cstddef>
#include <utility>

namespace camera_sim {
namespace {

constexpr std::size_t kBodyDepth = 2;
constexpr std::size_t kIndent = 2;
constexpr std::string_view kProlog = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

void AppendEscaped(std::string& out, std::string_view text) {
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            default: {
                const auto byte = static_cast<unsigned char>(c);
                const bool allowed = byte >= 0x20 || c == '\t' || c == '\n' || c == '\r';
                out += allowed ? c : ' ';
            }
        }
    }
}

}  // namespace

std::string EscapeXml(std::string_view text) {
    std::string out;
    AppendEscaped(out, text);
    return out;
}

CXmlWriter::CXmlWriter(const PrefixStyle& style, bool pretty) : style_(style), pretty_(pretty) {
    text_.reserve(2048);
}

void CXmlWriter::Open(Ns ns, std::string_view name) {
    CloseStartTag();
    const Ns inherited = open_.empty() ? Ns::kNone : open_.back().defaultNamespace;
    if (!open_.empty()) {
        open_.back().hasChildren = true;
    }
    if (pretty_) {
        NewLine(kBodyDepth + open_.size());
    }

    const std::string_view prefix = style_.Prefix(ns);
    OpenElement element{std::string(prefix), prefix.empty() ? ns : inherited, false};
    if (!prefix.empty()) {
        used_[static_cast<std::size_t>(ns)] = true;
        element.qualifiedName += ':';
    }
    element.qualifiedName += name;
    text_ += '<';
    text_ += element.qualifiedName;
    startTagOpen_ = true;
    open_.push_back(std::move(element));
    if (prefix.empty() && inherited != ns) {
        Attribute("xmlns", NamespaceOf(ns).uri);
    }
}

void CXmlWriter::Close() {
    const OpenElement& element = open_.back();
    if (startTagOpen_) {
        text_ += "/>";
        startTagOpen_ = false;
    } else {
        if (pretty_ && element.hasChildren) {
            NewLine(kBodyDepth + open_.size() - 1);
        }
        text_ += "</";
        text_ += element.qualifiedName;
        text_ += '>';
    }
    open_.pop_back();
}

void CXmlWriter::CloseStartTag() {
    if (startTagOpen_) {
        text_ += '>';
    }
    startTagOpen_ = false;
}

void CXmlWriter::NewLine(std::size_t depth) {
    text_ += '\n';
    text_.append(depth * kIndent, ' ');
}

void CXmlWriter::Attribute(std::string_view name, std::string_view value) {
    text_ += ' ';
    text_ += name;
    text_ += "=\"";
    AppendEscaped(text_, value);
    text_ += '"';
}

void CXmlWriter::Text(std::string_view text) {
    CloseStartTag();
    AppendEscaped(text_, text);
}

void CXmlWriter::Raw(std::string_view xml) {
    CloseStartTag();
    text_ += xml;
}

void CXmlWriter::Element(Ns ns, std::string_view name, std::string_view text) {
    Open(ns, name);
    Text(text);
    Close();
}

std::string CXmlWriter::QualifiedName(Ns ns, std::string_view name) {
    used_[static_cast<std::size_t>(ns)] = true;
    std::string qualified(style_.Prefix(ns));
    qualified += ':';
    qualified += name;
    return qualified;
}

void CXmlWriter::EndHeader() {
    header_ = std::move(text_);
    text_.clear();
}

void CXmlWriter::Clear() {
    startTagOpen_ = false;
    used_.fill(false);
    open_.clear();
    header_.clear();
    text_.clear();
}

std::string CXmlWriter::Envelope(bool xmlProlog) const {
    const std::string_view soap = style_.Prefix(Ns::kSoap);
    const std::string_view outerBreak = pretty_ ? "\n" : "";
    const std::string_view bodyBreak = pretty_ ? "\n  " : "";
    std::string out;
    out.reserve(text_.size() + header_.size() + 1024);
    if (xmlProlog) {
        out.append(kProlog).append(outerBreak);
    }
    out.append("<").append(soap).append(":Envelope");
    for (std::size_t i = 0; i < kNamespaceCount; ++i) {
        if (!used_[i] && static_cast<Ns>(i) != Ns::kSoap) {
            continue;
        }
        out.append(" xmlns:").append(style_.prefixes[i]).append("=\"");
        out.append(NamespaceOf(static_cast<Ns>(i)).uri).append("\"");
    }
    out.append(">").append(bodyBreak);
    if (!header_.empty()) {
        out.append("<").append(soap).append(":Header>").append(header_).append(bodyBreak);
        out.append("</").append(soap).append(":Header>").append(bodyBreak);
    }
    out.append("<").append(soap).append(":Body>");
    out.append(text_).append(bodyBreak).append("</").append(soap).append(":Body>");
    out.append(outerBreak).append("</").append(soap).append(":Envelope>");
    return out;
}

std::string CXmlWriter::NumberText(double value) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

}  // namespace camera_sim
