// A window with one label that ends at its first paint: what Qt Widgets itself costs.
#include <QApplication>
#include <QLabel>
#include <QTimer>

namespace {

class Label final : public QLabel {
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override {
        QLabel::paintEvent(event);
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    }
};

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    Label label(QStringLiteral("Spindrift"));
    label.show();
    return QApplication::exec();
}
