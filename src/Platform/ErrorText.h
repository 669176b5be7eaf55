// The standard English text of an error number, whatever the user's language ("No such file or
// directory"); "Unknown error 4711" for a number that has none. Any thread.
#pragma once

#include <QString>

QString errorText(int errorNumber);
