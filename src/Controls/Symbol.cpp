#include "Symbol.h"

#include <QDir>
#include <QFile>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <cmath>

// Static libraries drop resources that nothing refers to; the macro must stand outside namespaces.
static void registerSymbols() {
    Q_INIT_RESOURCE(symbols);
}

namespace {

constexpr qreal sidePerPoint = 1.25;
constexpr qreal disabledOpacity = 0.35;

void ensureResources() {
    static const bool registered = [] {
        registerSymbols();
        return true;
    }();
    Q_UNUSED(registered)
}

QString fileOf(const QString& name) {
    return QStringLiteral(":/symbols/") + name + ".svg";
}

// The drawing, `pixels` device pixels large, all in `colour` if that is valid, else in its own
// colours; null when there is no such file.
QPixmap rendered(const QString& file, QSize pixels, const QColor& colour) {
    ensureResources();
    if (pixels.isEmpty() || !QFile::exists(file)) {
        return {};
    }
    const QString key = QStringLiteral("%1/%2x%3/%4")
                            .arg(file)
                            .arg(pixels.width())
                            .arg(pixels.height())
                            .arg(colour.isValid() ? colour.name(QColor::HexArgb) : QString());
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) {
        return pixmap;
    }

    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer renderer(file);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal side = std::min(pixels.width(), pixels.height());
    renderer.render(&painter,
                    QRectF((pixels.width() - side) / 2, (pixels.height() - side) / 2, side, side));
    if (colour.isValid()) {
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), colour);
    }
    painter.end();
    pixmap = QPixmap::fromImage(std::move(image));
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

class SymbolIconEngine final : public QIconEngine {
public:
    SymbolIconEngine(QString file, const QColor& colour)
        : m_file(std::move(file)), m_colour(colour) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const qreal ratio = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, scaledPixmap(rect.size() * ratio, mode, state, ratio));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1.0);
    }

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/,
                         qreal ratio) override {
        QColor colour = m_colour;
        if (mode == QIcon::Disabled && colour.isValid()) {
            colour.setAlphaF(colour.alphaF() * static_cast<float>(disabledOpacity));
        }
        QPixmap result = rendered(m_file, size, colour);
        result.setDevicePixelRatio(ratio);
        return result;
    }

    QString key() const override { return QStringLiteral("SpindriftSymbol"); }
    QIconEngine* clone() const override { return new SymbolIconEngine(m_file, m_colour); }

private:
    QString m_file;
    QColor m_colour;
};

}  // namespace

QStringList Symbol::names() {
    ensureResources();
    QStringList names;
    const QStringList files = QDir(QStringLiteral(":/symbols")).entryList(QDir::Files, QDir::Name);
    for (const QString& file : files) {
        names.append(file.chopped(4));  // ".svg"
    }
    names.sort();
    return names;
}

int Symbol::side(qreal points) {
    return static_cast<int>(std::lround(points * sidePerPoint));
}

QPixmap Symbol::pixmap(const QString& name, qreal points, const QColor& colour,
                       qreal devicePixelRatio) {
    const int pixels = static_cast<int>(std::lround(side(points) * devicePixelRatio));
    QPixmap result = rendered(fileOf(name), QSize(pixels, pixels), colour);
    result.setDevicePixelRatio(devicePixelRatio);
    return result;
}

QIcon Symbol::icon(const QString& name, const QColor& colour) {
    ensureResources();
    if (!QFile::exists(fileOf(name))) {
        return {};
    }
    return QIcon(new SymbolIconEngine(fileOf(name), colour));
}

QIcon Symbol::applicationIcon() {
    ensureResources();
    return QIcon(new SymbolIconEngine(QStringLiteral(":/icons/spindrift.svg"), QColor()));
}
