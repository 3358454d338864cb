#include "host/application.h"

#include "program_version.h"

namespace vistel {

namespace {
Tstring registeredName;
}

void setApplicationName(const Tstring& name) { registeredName = name; }

const Tstring& applicationName() { return registeredName; }

const char* applicationVersion() { return VISTEL_VERSION; }

}  // namespace vistel
