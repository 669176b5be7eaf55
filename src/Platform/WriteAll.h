// Writing the whole of something. Stateless; any thread.
#pragma once

#include <QByteArrayView>

// Waits for the descriptor as often as it takes; false, with errno, when something stays unwritten.
bool writeAll(int descriptor, QByteArrayView content);
