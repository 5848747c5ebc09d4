#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <vector>

#include "system/Client.h"

namespace client_test {
namespace {

using tinyxml2::XMLElement;

/// The XML blocks of docs/commands.md: a request, its result, the next request ... A request
/// without a result document stands alone.
std::vector<std::string> Examples() {
    std::ifstream stream(DOCUMENTS_FOLDER "/commands.md");
    std::string text(std::istreambuf_iterator<char>(stream), {});
    const std::string fence = "```xml\n";
    std::vector<std::string> blocks;
    for (auto at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
        at += fence.size();
        blocks.push_back(text.substr(at, text.find("```", at) - at));
    }
    return blocks;
}

std::string Describe(const XMLElement* element) {
    std::string text = element->Name();
    for (const auto* each = element->FirstAttribute(); each != nullptr; each = each->Next()) {
        text += std::string(" ") + each->Name() + "=" + each->Value();
    }
    return text + ": " + (element->GetText() == nullptr ? "" : element->GetText());
}

/// Compares element by element; "…" in the documented text stands for any.
void ExpectSame(const XMLElement* documented, const XMLElement* real) {
    const std::string expected = Describe(documented);
    if (expected.ends_with(": …")) {
        EXPECT_STREQ(documented->Name(), real->Name());
    } else {
        EXPECT_EQ(expected, Describe(real));
    }
    const XMLElement* ours = documented->FirstChildElement();
    const XMLElement* theirs = real->FirstChildElement();
    for (; ours != nullptr && theirs != nullptr;
         ours = ours->NextSiblingElement(), theirs = theirs->NextSiblingElement()) {
        ExpectSame(ours, theirs);
    }
    EXPECT_TRUE(ours == nullptr) << "only documented: " << Describe(ours);
    EXPECT_TRUE(theirs == nullptr) << "not documented: " << Describe(theirs);
}

void ExpectSame(const std::string& documentedText, const char* realText) {
    tinyxml2::XMLDocument documented;
    tinyxml2::XMLDocument real;
    ASSERT_EQ(documented.Parse(documentedText.c_str()), tinyxml2::XML_SUCCESS);
    ASSERT_EQ(real.Parse(realText), tinyxml2::XML_SUCCESS);
    ExpectSame(documented.RootElement(), real.RootElement());
}

TEST(Documents, TheExamplesGiveTheResultsThatStandBesideThem) {
    const CStartedLibrary library;
    camera_sim::CCameraHost host;
    camera_sim::CCamera& camera = host.Add({});
    const std::vector<std::string> examples = Examples();
    ASSERT_GE(examples.size(), 32U);
    ASSERT_TRUE(Set(Login(camera), "<createPullPointSubscription/>"));
    for (std::size_t i = 0; i < examples.size(); ++i) {
        const unsigned int id = Login(camera);  // every example finds the clock set
        char* response = nullptr;
        int length = 0;
        const bool success = examples[i].starts_with("<Get")
                                 ? ONVIF_CLIENT_GetCfg(id, examples[i].c_str(), response, &length)
                                 : ONVIF_CLIENT_SetCfg(id, examples[i].c_str(), response);
        const bool hasResult = i + 1 < examples.size() && examples[i + 1].starts_with("<?xml");
        const bool isDocument = success && std::string_view(response).starts_with("<?xml");
        ASSERT_EQ(isDocument, hasResult) << examples[i];
        if (hasResult) {
            ExpectSame(examples[++i], response);
        }
        ONVIF_CLIENT_DelResponseBuff(response);
        ONVIF_CLIENT_Logout(id);
    }
}

}  // namespace
}  // namespace client_test
