#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <vector>

#include "commands/GetCmd.h"
#include "unit/Texts.h"

namespace onvif_client {
namespace {

/// A session that notes what goes out and answers nothing of use.
class CNotingSession final : public ICommandSession {
 public:
    explicit CNotingSession(bool media2) : media2_(media2) {}
    std::shared_ptr<const ProfileList> Profiles() const override {
        return std::make_shared<ProfileList>(ProfileList{{"P0", "S0", "V0", "E0", "", "", "A0"},
                                                         {"P1", "S1", "V1", "E1", "", "", ""}});
    }
    void ReplaceProfiles(ProfileList) override {}
    ServiceTable Services() const override { return {}; }
    bool HasMedia2() const override { return media2_; }
    PtzRanges SpeedRanges() const override { return {{-1, 1}, {-1, 1}, {-1, 1}}; }
    int DownloadPicture(const std::string&, ResponseBuffer&) override { return status::kSuccess; }
    Reply Exchange(const SignedRequest& request) override {
        sent += request.path + " " + client_test::Compact(request.envelope) + "\n";
        return {status::kSuccess, "<Envelope/>"};
    }
    std::string sent;

 private:
    const bool media2_;
};

/// Parameters by their paths below the command's element, in the order of the document.
using Parameters = std::vector<std::pair<std::string, std::string>>;

Parameters With(Parameters all, const std::string& path, const std::string& text) {
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.first == path; });
    (found == all.end() ? all.emplace_back(path, "") : *found).second = text;
    return all;
}

Parameters Without(Parameters all, const std::string& path) {
    std::erase_if(all, [&](const auto& each) { return each.first == path; });
    return all;
}

/// What goes out for a command with these parameters, to devices of either media version where
/// they are asked differently.
std::string Sent(const CommandTable& table, const CommandRow& row, const Parameters& all) {
    CXmlDocument document;
    XMLElement* parent = Append(document.AppendRoot(table.root), row.name);
    for (const auto& [path, text] : all) {
        XMLElement* at = parent;
        for (std::size_t start = 0; start <= path.size();) {
            const std::size_t end = std::min(path.find('/', start), path.size());
            const std::string step = path.substr(start, end - start);
            XMLElement* there = FirstChild(at, step);
            at = there == nullptr ? Append(at, step) : there;
            start = end + 1;
        }
        SetText(at, text);
    }
    std::string sent;
    for (const bool media2 : {false, true}) {
        CNotingSession session(media2);
        std::string result;
        if (media2 && row.media2 == nullptr) {
            break;
        }
        if (table.root == "Get") {
            RunGet(session, document.Print(), table);
        } else {
            RunSet(session, document.Print(), result, table);
        }
        sent += session.sent;
    }
    return sent;
}

std::vector<std::string> FindAll(const std::string& text, const char* pattern) {
    const std::regex regex(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) {
        found.push_back((*at)[1]);
    }
    return found;
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream stream(path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A row of a command's table in docs/commands.md.
struct Documented {
    std::string path;
    std::vector<std::string> values;  // those that the page spells out, and two more
    std::string leftOut;
};

/// @return the rows of the command's section; a section without a table says so.
std::vector<Documented> ReadSection(const std::string& page, const std::string& title) {
    const std::size_t start = page.find("\n### " + title + "\n");
    if (start == std::string::npos) {
        ADD_FAILURE() << title << " has no section";
        return {};
    }
    const std::string section = page.substr(start, page.find("```xml", start) - start);
    std::vector<Documented> rows;
    const std::regex row(R"(\| `([^`]+)` \| ([^|]+) \| ([^|]+) \| [^|]+ \|\n)");
    for (std::sregex_iterator at(section.begin(), section.end(), row), end; at != end; ++at) {
        rows.push_back({(*at)[1], FindAll((*at)[2], "`([^`]+)`"), (*at)[3]});
        rows.back().values.insert(rows.back().values.end(), {"7", "8"});
    }
    EXPECT_EQ(rows.empty(), section.find("\nNo parameters.\n") != std::string::npos) << title;
    EXPECT_EQ(rows.size() + (rows.empty() ? 0 : 1), FindAll(section, R"(\n(\| [`p]))").size())
        << title << " has a row that is not read";
    return rows;
}

/// Every parameter given, and the same with each of the values that the page spells out.
std::vector<Parameters> Uses(const std::vector<Documented>& rows) {
    Parameters all;
    for (const Documented& row : rows) {
        all.emplace_back(row.path, row.values.front());
    }
    std::vector<Parameters> uses = {all};
    for (const Documented& row : rows) {
        for (std::size_t i = 1; i + 2 < row.values.size(); ++i) {
            uses.push_back(With(all, row.path, row.values[i]));
        }
    }
    return uses;
}

/// The texts in the sources of the commands that could name a parameter, and pairs of those that
/// stand in one file of request builders.
std::set<std::string> Candidates() {
    std::set<std::string> candidates;
    for (const auto& file : std::filesystem::directory_iterator(COMMANDS_FOLDER)) {
        const auto literals = FindAll(ReadFile(file.path()), "\"([a-zI][A-Za-z0-9]*(/[a-z]+)*)\"");
        candidates.insert(literals.begin(), literals.end());
        const bool builds = file.path().string().ends_with("Requests.cpp");
        for (const std::string& group : builds ? literals : std::vector<std::string>()) {
            for (const std::string& literal : literals) {
                candidates.insert(std::string(group).append("/").append(literal));
            }
        }
    }
    return candidates;
}

class CCommandSection {
 public:
    CCommandSection(const CommandTable& table, const CommandRow& row, const std::string& page)
        : table_(table),
          row_(row),
          title_(std::string(table.root) + " " + std::string(row.name)),
          rows_(ReadSection(page, title_)),
          uses_(Uses(rows_)) {}

    void ExpectThatDocumentedOnesAreRead() const {
        for (const Documented& row : rows_) {
            const bool matters = std::any_of(uses_.begin(), uses_.end(), [&](const auto& use) {
                const std::string sent = Sent(table_, row_, use);
                return std::any_of(row.values.begin(), row.values.end(), [&](const auto& value) {
                    return sent != Sent(table_, row_, With(use, row.path, value));
                });
            });
            EXPECT_TRUE(matters) << title_ << " does not read " << row.path;
        }
    }

    void ExpectThatReadOnesAreDocumented(std::set<std::string> candidates) const {
        const std::set<std::string> literals = candidates;
        for (const Documented& row : rows_) {
            const std::string group = row.path.substr(0, row.path.rfind('/') + 1);
            for (const std::string& literal : literals) {
                if (!group.empty() && literal.find('/') == std::string::npos) {
                    candidates.insert(group + literal);
                }
            }
        }
        Parameters others;
        for (const std::string& each : candidates) {
            if (std::none_of(rows_.begin(), rows_.end(), [&](const Documented& row) {
                    return (row.path + "/").starts_with(each + "/") ||
                           each.starts_with(row.path + "/");
                })) {
                others.emplace_back(each, "7");
            }
        }
        for (const Parameters& use : uses_) {
            Parameters more = use;
            more.insert(more.end(), others.begin(), others.end());
            EXPECT_TRUE(Sent(table_, row_, more) == Sent(table_, row_, use))
                << title_ << " reads more than its table says:" << NamesOfThoseRead(use, others);
        }
    }

    void ExpectWhatIsSentWithout() const {
        for (const Documented& row : rows_) {
            const std::string said = row.leftOut.substr(0, row.leftOut.find(" ("));
            bool isShorter = false;  // than with an empty element, in a use that reads it
            for (const Parameters& use : uses_) {
                const std::string absent = Sent(table_, row_, Without(use, row.path));
                const auto with = [&](const std::string& text) {
                    return Sent(table_, row_, With(use, row.path, text));
                };
                bool agrees = true;
                if (said.starts_with('`')) {
                    agrees = absent == with(said.substr(1, said.size() - 2));
                } else if (said == "empty") {
                    agrees = absent == with("");
                } else if (said == "nothing is sent") {
                    agrees = absent.empty();
                } else if (said.ends_with("profile's")) {
                    const char* tokens[] = {"P0", "P1", "S0", "E0", "E1", "A0"};
                    agrees = std::any_of(std::begin(tokens), std::end(tokens),
                                         [&](const char* token) { return absent == with(token); });
                }
                isShorter = isShorter || absent.size() < with("").size();
                EXPECT_TRUE(agrees) << title_ << " without " << row.path << ": " << absent;
            }
            EXPECT_TRUE(isShorter || said != "left out") << title_ << " " << row.path;
        }
    }

 private:
    std::string NamesOfThoseRead(const Parameters& use, const Parameters& others) const {
        std::string names;
        for (const auto& [path, text] : others) {
            const bool isRead =
                Sent(table_, row_, With(use, path, text)) != Sent(table_, row_, use);
            names += isRead ? " " + path : "";
        }
        return names;
    }

    const CommandTable& table_;
    const CommandRow& row_;
    const std::string title_;
    const std::vector<Documented> rows_;
    const std::vector<Parameters> uses_;
};

TEST(Parameters, ThePageNamesThoseThatACommandReads) {
    const std::string page = ReadFile(DOCUMENTS_FOLDER "/commands.md");
    const std::set<std::string> candidates = Candidates();
    ASSERT_GT(candidates.size(), 1000U);
    for (const CommandTable* table : {&kGetCommands, &kSetCommands}) {
        for (const CommandRow& row : table->rows) {
            const CCommandSection command(*table, row, page);
            command.ExpectThatDocumentedOnesAreRead();
            command.ExpectThatReadOnesAreDocumented(candidates);
            command.ExpectWhatIsSentWithout();
        }
    }
}

}  // namespace
}  // namespace onvif_client
