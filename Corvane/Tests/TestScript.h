#pragma once

#include <string>
#include <vector>

#include <boost/algorithm/string/finder.hpp>
#include <boost/algorithm/string/iter_find.hpp>

#include "Services/UI/ScriptedPlatform.h"

namespace corvane::testing {

/// The parts of a text between its "; ".
inline std::vector<std::string> Parts(const std::string& text) {
    std::vector<std::string> parts;
    if (!text.empty()) boost::iter_split(parts, text, boost::first_finder("; "));
    return parts;
}

/// A script of actions and answers, each separated by "; ". "cancel" among the actions presses Cancel at the
/// end.
inline DialogScript Script(const std::string& actions, const std::string& answers = {}) {
    DialogScript script;
    script.dump = true;
    for (const std::string& action : Parts(actions)) {
        if (action == "cancel")
            script.cancel = true;
        else
            script.actions.push_back(ScriptedAction::Parse(action));
    }
    for (const std::string& answer : Parts(answers)) script.answers.push_back(ScriptedAnswer::Parse(answer));
    return script;
}

} // namespace corvane::testing
