#pragma once

#include "SweepModule.h"

namespace corvane {

/// The module that makes families, which is loaded first: a program that links it waits for the libraries of
/// pixels and pictures whenever it starts. Throws `Failure` as `FindInModule` does. Any thread.
const SweepModule& LoadSweepModule();

} // namespace corvane
