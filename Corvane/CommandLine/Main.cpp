#include <exception>
#include <new>
#include <string>

#include "Arguments.h"
#include "Commands.h"
#include "Console.h"
#include "Engine/Failure.h"
#include "Export/Export.h"

int main(int argc, char** argv) {
    using namespace corvane::commandline;
    try {
        const int status = RunArguments(argc, argv);
        return FlushOutput() ? status : kExitFailed;
    } catch (const corvane::UsageFailure& failure) {
        PrintError(failure.what());
        return kExitUsage;
    } catch (const corvane::Failure& failure) {
        PrintError(failure.what());
    } catch (const std::bad_alloc&) {
        PrintError("there is not enough memory for this; ask for smaller frames or fewer --jobs");
    } catch (const std::exception& exception) {
        PrintError("this failed in a way that was not foreseen (" + std::string(exception.what()) +
                   "); please report it with the command and the clip");
    }
    return kExitFailed;
}
