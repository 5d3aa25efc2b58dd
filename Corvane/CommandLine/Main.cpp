#include <exception>
#include <new>
#include <string>
#include <system_error>

#include "Arguments.h"
#include "Commands.h"
#include "Console.h"
#include "Engine/Failure.h"
#include "Export/Export.h"
#include "Services/Foundation/StandardStreams.h"

namespace corvane::commandline {
namespace {

/// Does what the arguments ask for. Returns the exit status. Throws `std::bad_alloc` alone.
int Run(int argc, char** argv) {
    try {
        const int status = RunArguments(argc, argv);
        return FlushOutput() ? status : kExitFailed;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const UsageFailure& failure) {
        PrintError(failure.what());
        return kExitUsage;
    } catch (const Failure& failure) {
        PrintError(failure.what());
    } catch (const std::exception& exception) {
        const auto* const error = dynamic_cast<const std::system_error*>(&exception);
        if (error != nullptr && error->code() == std::errc::not_enough_memory) throw std::bad_alloc();
        PrintError("this failed in a way that was not foreseen (" + std::string(exception.what()) +
                   "); please report it with the command and the clip");
    }
    return kExitFailed;
}

} // namespace
} // namespace corvane::commandline

int main(int argc, char** argv) {
    using namespace corvane::commandline;
    corvane::KeepStandardStreamsOpen();
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        PrintError("there is not enough memory for this; ask for smaller frames or fewer --jobs");
        return kExitFailed;
    }
}
