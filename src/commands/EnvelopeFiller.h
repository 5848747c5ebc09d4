/// @file
/// Fills an envelope template with the parameters of a request.
#ifndef ONVIF_CLIENT_COMMANDS_ENVELOPEFILLER_H
#define ONVIF_CLIENT_COMMANDS_ENVELOPEFILLER_H

#include <string>
#include <string_view>

#include "commands/CommandRequest.h"
#include "transform/XmlTransform.h"

namespace onvif_client {

/// All paths are canonical. Elements that do not exist are silently not written.
class CEnvelopeFiller {
 public:
    /// @p operation names the element of the SOAP body that the paths below start from
    /// ("tds:SetDNS"); empty: the body itself.
    CEnvelopeFiller(std::string_view envelopeTemplate, const std::string& operation)
        : transform_(envelopeTemplate),
          operation_(transform_.FindChild(
              transform_.Document().Root(),
              "s:Envelope/s:Body" + (operation.empty() ? operation : "/" + operation))) {}

    XMLElement* Operation() { return operation_; }
    XMLElement* Find(const std::string& path) { return transform_.FindChild(operation_, path); }

    void Set(const std::string& path, const std::string& text) {
        transform_.SetChildText(operation_, path, text);
    }
    /// Writes a parameter of the request; an absent one leaves the template as it is.
    void Copy(const CommandRequest& request, std::string_view parameter, const std::string& path) {
        if (request.Has(parameter)) {
            Set(path, request.Text(parameter));
        }
    }
    /// Appends new elements below @p parent and returns the last one.
    XMLElement* Add(XMLElement* parent, const std::string& path, std::string_view text = {}) {
        return transform_.AddElement(parent, path, text);
    }

    const std::string& Print() { return transform_.Document().Print(); }

 protected:
    /// The element at @p path below the envelope.
    XMLElement* Envelope(const std::string& path) {
        return transform_.FindChild(transform_.Document().Root(), "s:Envelope/" + path);
    }

 private:
    CXmlTransform transform_;
    XMLElement* operation_;
};

/// Declares the prefixes of XML Schema, as requests whose body has a default namespace do.
inline void DeclareSchemaInstance(XMLElement* body) {
    body->SetAttribute("xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance");
    body->SetAttribute("xmlns:xsd", "http://www.w3.org/2001/XMLSchema");
}

}  // namespace onvif_client

#endif
