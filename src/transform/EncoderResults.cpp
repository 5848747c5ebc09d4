#include "transform/MediaResults.h"

namespace onvif_client {

namespace {

constexpr CopiedValue kResolution[] = {{"Width", "width"}, {"Height", "height"}};
constexpr CopiedValue kAddress[] = {
    {"Type", "type"}, {"IPv4Address", "iPv4Address"}, {"IPv6Address", "iPv6Address"}};
constexpr CopiedValue kMulticast[] = {
    {"Address", "address", kAddress}, {"Port", "port"}, {"TTL", "tTL"}, {"AutoStart", "autoStart"}};

constexpr CopiedValue kBeforeCodec[] = {
    {"@token", "token"},
    {"Name", "name"},
    {"UseCount", "useCount"},
    {"@GuaranteedFrameRate", "guaranteedFrameRate"},
    {"Encoding", "encode"},
    {"Resolution", "resolution", kResolution},
    {"Quality", "quality"},
    {"RateControl/FrameRateLimit", "frameRate"},
    {"RateControl/EncodingInterval", "encodingInterval"},
    {"RateControl/BitrateLimit", "bitrate"},
    {"RateControl/@ConstantBitRate", "constantBitRate"},
};
// A ver10 configuration has a child for its codec, a ver20 one has attributes.
constexpr CopiedValue kCodecChild[] = {
    {"GovLength", "IFrameInterval"}, {"H264Profile", "profile"}, {"Mpeg4Profile", "profile"}};
constexpr CopiedValue kCodecAttributes[] = {{"@GovLength", "IFrameInterval"},
                                            {"@Profile", "profile"}};
constexpr CopiedValue kBehindCodec[] = {{"Multicast", "multicast", kMulticast},
                                        {"SessionTimeout", "sessionTimeout"}};

void CopyVideoEncoder(const ReplyValues& reply, XMLElement* command) {
    const XMLElement* configuration = FindElement(
        reply.envelope, "Envelope/Body/GetVideoEncoderConfigurationResponse/Configuration");
    if (configuration != nullptr) {
        XMLElement* item = Append(command, "item");
        Append(item, "index", reply.subject.index);
        CopyVideoEncoderConfiguration(configuration, item);
    }
}

}  // namespace

constinit const ResultFrame kVideoEncoderResult = {"GetResponse", "videoEncoderCfg",
                                                   CopyVideoEncoder};

void CopyVideoEncoderConfiguration(const XMLElement* configuration, XMLElement* item) {
    CopyValues(configuration, item, kBeforeCodec);
    const XMLElement* codec = FirstChild(configuration, TextAt(configuration, "Encoding"));
    CopyValues(codec, item, kCodecChild);
    CopyValues(configuration, item, kCodecAttributes);
    CopyValues(configuration, item, kBehindCodec);
}

}  // namespace onvif_client
