/// @file
/// XML documents and element paths: the layer over tinyxml2 through which request documents, SOAP
/// envelopes and result documents are read, edited and printed.
///
/// A path is element names joined by "/" ("Get/streamURI"), compared byte for byte, prefixes
/// included. It leads from a start element to the first child of each name. A step that repeats the
/// name of the element reached so far stays there, so a path may begin with the start element's own
/// name or leave it out. Missing elements are never made by a lookup.
///
/// No operation throws for a missing element, and every one takes a null element as a missing one.
/// A document and its elements belong to one thread at a time.
#ifndef ONVIF_CLIENT_COMMON_XMLDOCUMENT_H
#define ONVIF_CLIENT_COMMON_XMLDOCUMENT_H

#include <tinyxml2.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace onvif_client {

using tinyxml2::XMLElement;
using tinyxml2::XMLNode;

class CXmlDocument {
 public:
    /// A document that holds nothing but the declaration.
    CXmlDocument();
    /// As Load on a new document.
    explicit CXmlDocument(std::string_view text);

    /// Replaces the content by the parsed text, which ends at its first zero byte. A text without
    /// declaration gets one; a text that does not parse leaves nothing but the declaration. An
    /// ampersand that starts no reference is text (XmlReferences.h).
    /// @return true when the text parsed.
    bool Load(std::string_view text);

    /// The first element; null in an empty document.
    XMLElement* Root() { return document_.FirstChildElement(); }
    const XMLElement* Root() const { return document_.FirstChildElement(); }

    XMLElement* Find(std::string_view path);
    const XMLElement* Find(std::string_view path) const;

    /// Removes the element with everything below it; a missing one is ignored.
    void Delete(std::string_view path);

    /// Adds an element at the top level.
    XMLElement* AppendRoot(std::string_view name);

    /// The whole document as indented text, valid until the next print. Whatever its texts came
    /// from, it is UTF-8 with the characters that XML has (XmlCharacters.h).
    const std::string& Print();

 private:
    tinyxml2::XMLDocument document_;
    std::string printed_;
};

/// The element that @p path leads to from @p start, or null.
const XMLElement* FindElement(const XMLElement* start, std::string_view path);
XMLElement* FindElement(XMLElement* start, std::string_view path);

/// The first child element with exactly that name, or null.
const XMLElement* FirstChild(const XMLElement* parent, std::string_view name);
XMLElement* FirstChild(XMLElement* parent, std::string_view name);

/// The next sibling element with exactly that name, or null.
const XMLElement* NextSibling(const XMLElement* element, std::string_view name);

/// The children with exactly that name, in document order: for (const XMLElement* each :
/// Children(...)). The name must outlive the loop; the children must stay where they are.
class Children {
 public:
    class Iterator {
     public:
        Iterator(const XMLElement* at, std::string_view name) : at_(at), name_(name) {}
        const XMLElement* operator*() const { return at_; }
        Iterator& operator++() {
            at_ = NextSibling(at_, name_);
            return *this;
        }
        bool operator==(const Iterator& other) const { return at_ == other.at_; }

     private:
        const XMLElement* at_;
        std::string_view name_;
    };

    Children(const XMLElement* parent, std::string_view name) : parent_(parent), name_(name) {}
    Iterator begin() const { return {FirstChild(parent_, name_), name_}; }
    Iterator end() const { return {nullptr, name_}; }

 private:
    const XMLElement* parent_;
    std::string_view name_;
};

/// The text of the element's first child when that is a text; else, and for null, "". Valid as long
/// as the element is unchanged.
std::string_view TextOf(const XMLElement* element);
/// The text at @p path below @p start, as TextOf.
std::string_view TextAt(const XMLElement* start, std::string_view path);
/// The element's name; "" for null.
std::string_view NameOf(const XMLElement* element);
/// The attribute's value, or null when the element or the attribute is missing.
const char* AttributeOf(const XMLElement* element, const char* name);

/// Gives the element a text. A first child that is there already gets the value in its place,
/// whatever it is: a first child that is an element gets it as its name.
/// @return false for a null element or value.
bool SetText(XMLElement* element, const char* value);
bool SetText(XMLElement* element, const std::string& value);

/// Appends one new element per step of @p path, each below the one before, the first as last child
/// of @p parent.
/// @return the last one; null, and nothing is done, for a null parent or an empty path.
XMLElement* Append(XMLElement* parent, std::string_view path);
/// The same with a text in the last element.
XMLElement* Append(XMLElement* parent, std::string_view path, std::string_view text);
XMLElement* Append(XMLElement* parent, std::string_view path, std::int32_t value);
XMLElement* Append(XMLElement* parent, std::string_view path, std::uint32_t value);

/// Gives the attributes and texts below @p parent the form that they have once the document is
/// printed and parsed again: carriage returns become or join line feeds, and texts of nothing but
/// white space are gone.
/// @param behind  a child of @p parent: only what follows it is looked at; null: all.
void TakeParsedForm(XMLElement* parent, XMLNode* behind = nullptr);

}  // namespace onvif_client

#endif
