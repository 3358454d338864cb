#include "host/application.h"

namespace vistel {

namespace {
Tstring registeredName;
}

void setApplicationName(const Tstring& name) { registeredName = name; }

const Tstring& applicationName() { return registeredName; }

}  // namespace vistel
