#include "HistoryList.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include "ByteCount.h"
#include "DateText.h"
#include "DiagnosticsStore.h"
#include "Divider.h"
#include "TextLabel.h"
#include "TextStyle.h"

namespace {

TextLabel* addLine(QVBoxLayout* column, const QString& text, TextStyle::Style style,
                   QFont::Weight weight, Appearance::Role role, const char* name, QWidget* parent) {
    auto* line =
        new TextLabel(text, TextStyle::font(style, weight), role, TextLabel::Wrap::No, parent);
    line->setObjectName(QString::fromLatin1(name));
    column->addWidget(line);
    return line;
}

}  // namespace

HistoryList::HistoryList(const DiagnosticsStore& store, QWidget* parent)
    : QWidget(parent), m_store(store) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);

    auto* title = new TextLabel(tr("History"), TextStyle::font(TextStyle::Style::Headline),
                                Appearance::Role::Primary, TextLabel::Wrap::No, this);
    title->setObjectName(QStringLiteral("historyTitle"));
    column->addWidget(title);

    m_empty = new TextLabel(tr("No speed tests recorded yet."),
                            TextStyle::font(TextStyle::Style::Caption), Appearance::Role::Secondary,
                            TextLabel::Wrap::Yes, this);
    m_empty->setObjectName(QStringLiteral("historyEmpty"));
    column->addWidget(m_empty);

    m_area = new QScrollArea(this);
    m_area->setObjectName(QStringLiteral("historyArea"));
    m_area->setAccessibleName(tr("History"));
    m_area->setWidgetResizable(true);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setFocusPolicy(Qt::StrongFocus);
    m_area->viewport()->setAutoFillBackground(false);
    column->addWidget(m_area, 1);
    column->addStretch();
    refresh();
}

QWidget* HistoryList::area() const {
    return m_area;
}

QString HistoryList::speedString(double bytesPerSecond) {
    return ByteCount::formatSpeed(bytesPerSecond);
}

void HistoryList::refresh() {
    const int scrolled = m_area->verticalScrollBar()->value();
    const auto& results = m_store.results();
    m_empty->setVisible(results.isEmpty());
    m_area->setVisible(!results.isEmpty());

    auto* rows = new QWidget;
    rows->setObjectName(QStringLiteral("historyRows"));
    rows->setAutoFillBackground(false);
    auto* column = new QVBoxLayout(rows);
    column->setContentsMargins(0, 0, 8, 0);
    column->setSpacing(10);
    int index = 0;
    for (const SpeedTestResult& result : results) {
        column->addWidget(makeRow(result, index++));
        column->addWidget(new Divider(rows));
    }
    column->addStretch();
    m_area->setWidget(rows);
    m_rows = rows;
    m_area->verticalScrollBar()->setValue(scrolled);
}

QWidget* HistoryList::makeRow(const SpeedTestResult& result, int index) {
    using Style = TextStyle::Style;
    using Role = Appearance::Role;
    auto* row = new QWidget;
    row->setObjectName(QStringLiteral("historyRow%1").arg(index));
    // The column below the rows takes what is left of the height, not the rows.
    row->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    auto* columns = new QHBoxLayout(row);
    columns->setContentsMargins(0, 0, 0, 0);

    auto* left = new QVBoxLayout;
    left->setSpacing(2);
    const QString drive = m_store.nicknames().value(result.driveKey, result.driveModelString);
    const TextLabel* disc =
        addLine(left, tr("%1 • %2").arg(result.discKind, ByteCount::format(result.discSizeBytes)),
                Style::Caption, QFont::Bold, Role::Primary, "rowDisc", row);
    addLine(left, drive, Style::Caption2, QFont::Normal, Role::Secondary, "rowDrive", row);
    const TextLabel* date = addLine(left, DateText::abbreviated(result.date), Style::Caption2,
                                    QFont::Normal, Role::Secondary, "rowDate", row);
    left->addStretch();

    auto* right = new QVBoxLayout;
    right->setSpacing(2);
    const TextLabel* speed = addLine(right, speedString(result.averageBytesPerSecond),
                                     Style::Caption, QFont::Bold, Role::Primary, "rowSpeed", row);
    const TextLabel* multiple = addLine(right, speedMultipleText(result), Style::Caption2,
                                        QFont::Normal, Role::Secondary, "rowMultiple", row);
    const TextLabel* source = addLine(right, rawValue(result.source), Style::Caption2,
                                      QFont::Normal, Role::Secondary, "rowSource", row);
    right->addStretch();
    for (int i = 0; i < 3; ++i) {
        right->setAlignment(right->itemAt(i)->widget(), Qt::AlignRight);
    }

    columns->addLayout(left, 1);
    columns->addStretch();
    columns->addLayout(right);
    row->setAccessibleName(QStringList{disc->text(), drive, date->text(), speed->text(),
                                       multiple->text(), source->text()}
                               .join(QStringLiteral(", ")));
    return row;
}

#include "moc_HistoryList.cpp"
