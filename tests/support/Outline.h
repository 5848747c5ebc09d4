/// XML without end tags, which a reader takes in at a glance.
#ifndef ONVIF_CLIENT_TESTS_SUPPORT_OUTLINE_H
#define ONVIF_CLIENT_TESTS_SUPPORT_OUTLINE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace client_test {

class COutline {
 public:
    explicit COutline(std::string_view text) : rest_(text) {}

    /// The elements up to a closing brace or the end.
    std::string Elements() {
        std::string xml;
        while (SkipBlanks(), !rest_.empty() && !rest_.starts_with('}')) {
            const std::string name = Word();
            xml += "<" + name;
            if (Takes('(')) {
                while (SkipBlanks(), !rest_.empty() && !Takes(')')) {
                    xml += " " + Word();
                    Require('=');
                    xml += "=\"" + Word() + "\"";
                }
            }
            std::string inside = Takes('=') ? Word() : "";
            if (Takes('{')) {
                inside += Elements();
                Require('}');
            }
            if (inside.empty()) {
                xml += "/>";
            } else {
                xml.append(">").append(inside).append("</").append(name).append(">");
            }
        }
        return xml;
    }

 private:
    /// A name or a value; in single quotes it may be any.
    std::string Word() {
        const bool quoted = Takes('\'');
        std::string word(rest_.substr(0, rest_.find_first_of(quoted ? "'" : " ={}()")));
        rest_.remove_prefix(word.size());
        if (quoted) {
            Require('\'');
        } else if (word.empty()) {
            Require('a');
        }
        return word;
    }
    bool Takes(char wanted) {
        const bool there = rest_.starts_with(wanted);
        rest_.remove_prefix(there ? 1 : 0);
        return there;
    }
    void Require(char wanted) {
        if (!Takes(wanted)) {
            ADD_FAILURE() << "an outline needs " << wanted << " before: " << rest_;
            rest_ = {};
        }
    }
    void SkipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size())); }

    std::string_view rest_;
};

/// "a(n=1){b=text c='two words' d}" is <a n="1"><b>text</b><c>two words</c><d/></a>.
inline std::string Xml(std::string_view outline) {
    return COutline(outline).Elements();
}

}  // namespace client_test

#endif
