// Waiting for something to become true, with the event loop running.
#pragma once

#include <functional>

// Runs the event loop until the condition holds; false when it still does not after a generous
// limit (it only ends a test that would hang; it never decides one that works).
bool waitUntil(const std::function<bool()>& condition, int limitMilliseconds = 60000);
