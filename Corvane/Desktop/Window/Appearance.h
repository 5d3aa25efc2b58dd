#pragma once

#include <QString>

namespace corvane::desktop {

/// How windows are to look.
enum class Appearance { kSystem, kLight, kDark };

/// Gives all windows of the process a look, at once. `kSystem` is what the desktop has set. UI thread.
void ApplyAppearance(Appearance appearance);

/// The look that the person chose last, in this run or an earlier one. UI thread.
Appearance StoredAppearance();
/// Keeps a look for the next start. UI thread.
void StoreAppearance(Appearance appearance);

} // namespace corvane::desktop
