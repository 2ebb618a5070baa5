#include "platform/NTerminationSignalGuard.h"

NTerminationSignalGuard::NTerminationSignalGuard() : m_saved{} {}

NTerminationSignalGuard::~NTerminationSignalGuard() = default;
