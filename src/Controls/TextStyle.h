// The program's text styles, as sizes relative to the desktop's own font.
//
// Stateless; main thread. A font is worked out from the application's font at the time of the call,
// so a larger desktop font makes every style larger in proportion.
#pragma once

#include <QFont>
#include <optional>

namespace TextStyle {

enum class Style { Body, Title, Title2, Headline, Callout, Subheadline, Caption, Caption2 };

// The style's font in its usual weight (headline: bold, all others: regular), or in the given one.
QFont font(Style style, std::optional<QFont::Weight> weight = std::nullopt);

// Points of a text style or a symbol (body text: 13) as a length in device-independent pixels.
double length(double points);

}  // namespace TextStyle
