#include "documents/EncoderCodec.h"

#include <tinyxml2.h>

#include "documents/ResultDocument.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

constexpr const char* kSetEncoder = "videoEncodeCfg";

std::string CodecAt(const CResultDocument& result, const char* command, const std::string& index,
                    const std::string& path) {
    for (const XMLElement* item : result.Items(command)) {
        if (TextAt(item, "index") == index) {
            return TextAt(item, path);
        }
    }
    return "";
}

}  // namespace

bool SetsEncoder(const std::string& request) {
    return CResultDocument(request).Command(kSetEncoder) != nullptr;
}

std::string KeepCodec(std::string& request, const std::string& shown, const std::string& profiles) {
    tinyxml2::XMLDocument document;
    document.Parse(request.c_str(), request.size());
    XMLElement* command = document.RootElement()->FirstChildElement(kSetEncoder);
    XMLElement* item = command == nullptr ? nullptr : command->FirstChildElement("item");
    XMLElement* encode = item == nullptr ? nullptr : item->FirstChildElement("encode");
    if (encode == nullptr) {
        return "";
    }
    const std::string index = TextAt(item, "index");
    const std::string wanted = TextAt(encode, "");
    const std::string present =
        CodecAt(CResultDocument(profiles), "profiles", index, "videoEncoderCfg/encode");
    const bool changed =
        CodecAt(CResultDocument(shown), "videoEncoderCfg", index, "encode") != wanted;
    if (changed || present.empty() || present == wanted) {
        return "";
    }
    encode->SetText(present.c_str());
    tinyxml2::XMLPrinter printer(nullptr, true);
    document.Print(&printer);
    request = printer.CStr();
    return "the encoder of profile " + index + " keeps " + present +
           ", which videoEncoderCfg shows as " + wanted +
           " ('set HOST videoEncodeCfg --item/encode' changes it)";
}

}  // namespace onvifctl
