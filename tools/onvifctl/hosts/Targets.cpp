#include "hosts/Targets.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "ExitCode.h"
#include "hosts/HostsFile.h"
#include "system/StandardStreams.h"
#include "vocabulary/Nearest.h"

namespace onvifctl {

namespace {

/// The cameras of the hosts file, and a list of targets that grows by words.
class CChosen {
 public:
    CChosen(const HostChoice& choice, const ConnectionOptions& common)
        : given_(choice.given),
          common_(common),
          file_(choice.file.empty() ? DefaultHostsFile() : choice.file),
          entries_(ReadHostsFile(file_, choice.file.empty())) {
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            places_.emplace(entries_[i].name, i);
        }
    }

    void AddAll() {
        if (entries_.empty()) {
            throw CFailure(ExitCode::kUsage, "the hosts file '" + file_ + "' names no camera");
        }
        for (const HostEntry& entry : entries_) {
            Add(entry);
        }
    }

    void AddTag(const std::string& tag) {
        bool known = false;
        for (const HostEntry& entry : entries_) {
            if (std::find(entry.tags.begin(), entry.tags.end(), tag) != entry.tags.end()) {
                Add(entry);
                known = true;
            }
        }
        if (!known) {
            throw UnknownTag(tag);
        }
    }

    void AddWord(const std::string& word) {
        const auto place = places_.find(word);
        if (word.starts_with('@')) {
            AddTag(word.substr(1));
        } else if (place != places_.end()) {
            Add(entries_[place->second]);
        } else {
            HostEntry unknown;
            unknown.name = unknown.address = word;
            Add(unknown);
        }
    }

    std::vector<ConnectionOptions> targets;

 private:
    void Add(const HostEntry& entry) {
        if (!present_.insert(entry.name).second) {
            return;
        }
        ConnectionOptions& target = targets.emplace_back(common_);
        target.name = entry.name;
        target.host = entry.address;
        target.user = given_.user.value_or(entry.user.value_or(common_.user));
        if (given_.password) {
            target.password = given_.password;
        } else if (entry.password) {
            target.password = entry.password;
        } else if (!entry.passwordFile.empty() || !entry.passwordCommand.empty()) {
            target.password.reset();
            target.passwordFile = entry.passwordFile;
            target.passwordCommand = entry.passwordCommand;
        }
    }

    CFailure UnknownTag(const std::string& tag) const {
        std::set<std::string> tags;
        for (const HostEntry& entry : entries_) {
            tags.insert(entry.tags.begin(), entry.tags.end());
        }
        return {ExitCode::kUsage, "no camera of '" + file_ + "' has the tag '" + tag + "'" +
                                      DidYouMean(tag, {tags.begin(), tags.end()})};
    }

    const GivenLogin& given_;
    const ConnectionOptions& common_;
    const std::string file_;
    const std::vector<HostEntry> entries_;
    std::map<std::string, std::size_t> places_;
    std::set<std::string> present_;
};

/// Asks once for each user.
void AskForMissingPasswords(std::vector<ConnectionOptions>& targets) {
    std::map<std::string, std::vector<ConnectionOptions*>> missing;
    for (ConnectionOptions& target : targets) {
        if (NeedsPassword(target)) {
            missing[target.user].push_back(&target);
        }
    }
    for (const auto& [user, cameras] : missing) {
        const std::string where = cameras.size() == 1 ? cameras.front()->name
                                                      : std::to_string(cameras.size()) + " cameras";
        const auto password = AskForPassword("Password of " + user + " at " + where + ": ");
        for (ConnectionOptions* camera : cameras) {
            camera->password = password.value_or("");
        }
    }
}

}  // namespace

std::vector<ConnectionOptions> Targets(const HostChoice& choice, const ConnectionOptions& common) {
    CChosen chosen(choice, common);
    for (const std::string& list : choice.words) {
        std::istringstream words(list);
        for (std::string word; std::getline(words, word, ',');) {
            chosen.AddWord(word);
        }
    }
    for (const std::string& tag : choice.tags) {
        chosen.AddTag(tag);
    }
    if (choice.all) {
        chosen.AddAll();
    }
    if (chosen.targets.empty()) {
        throw CFailure(ExitCode::kUsage, "no HOST is given");
    }
    AskForMissingPasswords(chosen.targets);
    return std::move(chosen.targets);
}

ConnectionOptions Target(const HostChoice& choice, const ConnectionOptions& common) {
    CChosen chosen(choice, common);
    for (const std::string& word : choice.words) {
        chosen.AddWord(word);
    }
    if (chosen.targets.size() != 1) {
        throw CFailure(ExitCode::kUsage, "this command is for one HOST");
    }
    return chosen.targets.front();
}

}  // namespace onvifctl
