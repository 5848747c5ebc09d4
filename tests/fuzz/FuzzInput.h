/// @file
/// What the fuzz targets share. An input is a text and, as its last byte, a number that chooses
/// what reads it and how. Run them with tools/scripts/fuzz.
#ifndef ONVIF_CLIENT_TESTS_FUZZ_FUZZINPUT_H
#define ONVIF_CLIENT_TESTS_FUZZ_FUZZINPUT_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "commands/CommandTable.h"

namespace onvif_client::fuzz {

struct FuzzInput {
    std::string_view text;
    std::uint8_t choice;
};

inline FuzzInput ReadInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    return size == 0 ? FuzzInput{bytes, 0} : FuzzInput{bytes.substr(0, size - 1), data[size - 1]};
}

/// Stops the fuzzer: what was expected does not hold.
inline void Expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// A parser that forgives nothing reads the text.
void ExpectDocument(std::string_view text);

/// What stands between two replies of a session.
constexpr char kBetweenReplies = '\x1e';

inline std::vector<std::string> SplitReplies(std::string_view text) {
    std::vector<std::string> replies;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(kBetweenReplies), text.size());
        replies.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return replies;
}

/// A request of one command, the one with that number.
inline std::string OneCommand(const CommandTable& table, std::size_t number) {
    const std::string root(table.root);
    const std::string name(table.rows[number % table.rows.size()].name);
    return "<" + root + "><" + name + "/></" + root + ">";
}

/// A step that makes a result, and the command that it belongs to.
struct ResultStep {
    const CommandRow* row;
    const CommandStep* step;
};

/// All of both tables. The choice of fuzz_results is an index into them, or behind them.
inline std::vector<ResultStep> ResultSteps() {
    std::vector<ResultStep> found;
    for (const CommandTable* table : {&kGetCommands, &kSetCommands}) {
        for (const CommandRow& row : table->rows) {
            for (const CommandSteps* steps : {&row.steps, row.media2}) {
                for (std::size_t i = 0; steps != nullptr && i < steps->size(); ++i) {
                    if ((*steps)[i].result != nullptr) {
                        found.push_back({&row, &(*steps)[i]});
                    }
                }
            }
        }
    }
    return found;
}

}  // namespace onvif_client::fuzz

#endif
