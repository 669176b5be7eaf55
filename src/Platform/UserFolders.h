// The user's folders, as paths. Stateless; any thread.
#pragma once

#include <QString>
#include <optional>

namespace UserFolders {

// The folder for temporary images, ending in "/": $TMPDIR if set, else /var/tmp, else /tmp (images
// are large, and /tmp is often memory).
QString temporary();

// The home folder ($HOME, else the password database's), without a slash at its end.
QString home();

// $XDG_DATA_HOME, else ~/.local/share; absent when neither can be told.
std::optional<QString> data();

// A fresh random UUID in its 36-character upper-case form.
QString freshIdentifier();

}  // namespace UserFolders
