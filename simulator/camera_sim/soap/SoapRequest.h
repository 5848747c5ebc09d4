/// @file
/// Reads requests: the envelope and its elements. Local names decide inside an operation, so that
/// unusual prefixes, orders and namespaces of children do no harm.
#ifndef CAMERA_SIM_SOAP_SOAPREQUEST_H
#define CAMERA_SIM_SOAP_SOAPREQUEST_H

#include <tinyxml2.h>

#include <string>
#include <string_view>
#include <vector>

namespace camera_sim {

using XmlElement = tinyxml2::XMLElement;

std::string_view LocalName(const XmlElement& element);
/// The URI of the element's namespace, empty for none.
std::string_view NamespaceUri(const XmlElement& element);
/// That of a qualified name ("dn:Device") in the element's text.
std::string_view NamespaceUri(const XmlElement& element, std::string_view name);

/// The first child of that local name; null for none and when @p parent is null.
const XmlElement* Child(const XmlElement* parent, std::string_view localName);
std::vector<const XmlElement*> Children(const XmlElement* parent, std::string_view localName);
/// The element's text without white space around it; empty for a null element.
std::string_view Text(const XmlElement* element);
std::string_view ChildText(const XmlElement* parent, std::string_view localName);

/// A received envelope.
class CSoapRequest {
 public:
    enum class Problem { kNone, kNotXml, kNotSoap12, kNoOperation };

    /// Reads @p body; the result is in Problem() and below.
    explicit CSoapRequest(std::string_view body);

    Problem GetProblem() const { return problem_; }
    /// The first element of the body; null when there is a problem.
    const XmlElement* Operation() const { return operation_; }
    /// The envelope's header, or null.
    const XmlElement* Header() const { return header_; }

 private:
    tinyxml2::XMLDocument document_;
    const XmlElement* header_ = nullptr;
    const XmlElement* operation_ = nullptr;
    Problem problem_ = Problem::kNone;
};

}  // namespace camera_sim

#endif
