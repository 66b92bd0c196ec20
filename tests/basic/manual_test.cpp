// Every example of the manual, typed as it stands; the screen must answer what the manual says.
#include "basic_machine.h"

#include <fstream>

namespace {

struct example {
    int line; // in the manual
    std::string typed, answer;
};

std::vector<example> examples_of_the_manual() {
    std::ifstream in(KIV_SOURCE_DIR "/docs/basic.md");
    std::vector<example> examples;
    std::string *into = nullptr;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (line == "```basic") {
            examples.push_back({number, "", ""});
            into = &examples.back().typed;
        } else if (line == "```text" && !examples.empty()) {
            into = &examples.back().answer;
        } else if (line == "```") {
            into = nullptr;
        } else if (into != nullptr) {
            *into += line + '\n';
        }
    }
    return examples;
}

struct BasicManual : BasicMachine {};

TEST_F(BasicManual, EveryExampleAnswersAsItSays) {
    const auto examples = examples_of_the_manual();
    ASSERT_GT(examples.size(), 30u);
    for (const example &e : examples) {
        SCOPED_TRACE("docs/basic.md, line " + std::to_string(e.line));
        SetUp();
        type("CLS\n");
        type(e.typed);
        const auto shown = lines_of(screen());
        auto at = shown.begin();
        for (const std::string &wanted : lines_of(e.answer)) {
            at = std::find(at, shown.end(), wanted);
            if (at == shown.end()) {
                ADD_FAILURE() << "not shown, or not in its place: \"" << wanted << "\"\n" << screen();
                break;
            }
            ++at;
        }
    }
}

} // namespace
