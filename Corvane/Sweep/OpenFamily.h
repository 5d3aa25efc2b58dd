#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Engine/Bundle.h"
#include "Family.h"

namespace corvane {

/// The family of a plan, whose base clip is opened for it. Throws `Failure` if that can't be read, and
/// `UsageFailure` as `Family` does and for codecs and containers that there are not. Any thread.
Family OpenFamily(const Plan& plan, const std::shared_ptr<Bundle>& bundle);

/// Says what the members are before anything is made: a table, or with `json` a JSON object a line, as in the
/// manifest. `print` gets it in pieces. Any thread.
void ListFamily(const Family& family, bool json, const std::function<void(const std::string&)>& print);

} // namespace corvane
