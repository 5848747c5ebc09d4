/// @file
/// From the device's namespaces to our own vocabulary and back. Everything in this folder is a pure
/// function of its arguments (log lines aside) and may run on any thread.
///
/// A device chooses its own namespace prefixes. Two independent ways lead past them:
/// - TrimXmlNamespace rewrites the text, or TrimElementNames the document, so that no tag carries a
///   prefix; the result is read with plain paths ("Envelope/Body/Fault"). Result builders work this
///   way (ResultFrame.h).
/// - A CXmlTransform learns which prefix its document uses for each of 24 canonical prefixes and
///   translates canonical paths ("s:Envelope/s:Body") before every lookup. Request builders and the
///   security header work this way.
#ifndef ONVIF_CLIENT_TRANSFORM_XMLTRANSFORM_H
#define ONVIF_CLIENT_TRANSFORM_XMLTRANSFORM_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/XmlDocument.h"

namespace onvif_client {

/// A document and its prefix table; made for one envelope or reply and thrown away with it.
class CXmlTransform {
 public:
    static constexpr std::size_t kPrefixCount = 24;

    /// An empty document, every canonical prefix mapped to itself.
    CXmlTransform();
    /// Parses the envelope and, when that succeeds, learns its prefixes.
    explicit CXmlTransform(std::string_view envelope);

    CXmlDocument& Document() { return document_; }

    /// Maps every canonical prefix to itself.
    void InitNamespacePrefix();
    /// Learns the prefixes from the declarations on the root element; those below it are not read.
    /// A canonical prefix that the root does not declare keeps its mapping.
    void LoadNamespacePrefix();

    /// Rewrites the prefix of each step from the canonical one to the document's.
    void LocalizePath(std::string& path) const;
    /// The reverse: from the document's prefix to the canonical one.
    void CanonicalizeName(std::string& nameOrPath) const;

    // The accessors below take canonical paths.

    /// As Append of XmlDocument.h.
    XMLElement* AddElement(XMLElement* parent, std::string path, std::string_view text);
    XMLElement* AddIntElement(XMLElement* parent, std::string path, std::int32_t value);
    XMLElement* AddUIntElement(XMLElement* parent, std::string path, std::uint32_t value);
    /// @return false when the element is missing.
    bool SetElementText(std::string path, const std::string& text);
    bool SetChildText(XMLElement* parent, std::string path, const std::string& text);
    /// @p text is cleared first. A text with a colon comes back with a canonical prefix, so that
    /// qualified values (a fault's subcode) can be compared.
    /// @return false when the element is missing.
    bool GetChildText(const XMLElement* parent, std::string path, std::string& text) const;
    XMLElement* FindChild(XMLElement* parent, std::string path) const;
    /// The canonical name.
    /// @return false, and an empty name, for null.
    bool GetElementName(const XMLElement* element, std::string& name) const;

    /// Removes the prefix of every tag: of start and end tags whose name, read up to the next blank
    /// or ">", holds a colon. Attributes and texts stay as they are. The result is as long as the
    /// input, the rest filled with zero bytes: a text that ends at its first zero byte.
    static std::string TrimXmlNamespace(std::string_view reply);
    /// The same on a document: the element and all below it lose their prefixes. Texts, comments
    /// and CDATA sections stay as they are; in a text, those with a colon would lose their start.
    static void TrimElementNames(XMLElement* element);
    /// Loads a reply into the document and trims it so.
    static void LoadTrimmed(std::string_view reply, CXmlDocument& document);

 private:
    struct Prefix {
        std::string_view canonical;
        std::string actual;
    };

    CXmlDocument document_;
    std::array<Prefix, kPrefixCount> prefixes_;  // ascending by canonical
};

}  // namespace onvif_client

#endif
