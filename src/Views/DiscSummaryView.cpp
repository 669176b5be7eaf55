#include "DiscSummaryView.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ByteCount.h"
#include "IconButton.h"
#include "SymbolLabel.h"
#include "TextLabel.h"
#include "TextStyle.h"

DiscSummaryView::DiscSummaryView(QWidget* parent) : QWidget(parent) {
    using Appearance::Role;
    const QFont caption = TextStyle::font(TextStyle::Style::Caption);
    m_name = new SymbolLabel(QStringLiteral("opticaldisc"), QString(),
                             TextStyle::font(TextStyle::Style::Headline), Role::Primary,
                             TextLabel::Wrap::Yes, this);
    m_type = new TextLabel(QString(), caption, Role::Secondary, TextLabel::Wrap::Yes, this);
    m_size = new TextLabel(QString(), caption, Role::Secondary, TextLabel::Wrap::No, this);
    m_audioWarning = new SymbolLabel(QStringLiteral("exclamationmark.triangle.fill"),
                                     OpticalDisc::audioWarning(), caption, Role::Orange,
                                     TextLabel::Wrap::Yes, this);
    m_eject =
        new IconButton(QStringLiteral("eject.fill"), 16, Role::Accent, tr("Eject Disc"), this);
    m_name->setObjectName(QStringLiteral("discName"));
    m_type->setObjectName(QStringLiteral("discType"));
    m_size->setObjectName(QStringLiteral("discSize"));
    m_audioWarning->setObjectName(QStringLiteral("audioWarning"));
    m_eject->setObjectName(QStringLiteral("ejectButton"));

    auto* lines = new QVBoxLayout;
    lines->setSpacing(4);
    lines->addWidget(m_name);
    lines->addWidget(m_type);
    lines->addWidget(m_size);
    lines->addWidget(m_audioWarning);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addLayout(lines, 1);
    row->addWidget(m_eject, 0, Qt::AlignVCenter);
    connect(m_eject, &IconButton::clicked, this, &DiscSummaryView::ejectRequested);
}

void DiscSummaryView::show(const OpticalDisc& disc) {
    m_name->setText(disc.displayName());
    m_type->setText(tr("Type: %1  \u2022  Device: /dev/%2").arg(disc.rawType, disc.bsdName));
    m_size->setVisible(disc.totalBytes.has_value());
    if (disc.totalBytes) {
        m_size->setText(tr("Size: %1").arg(ByteCount::format(*disc.totalBytes)));
    }
    m_audioWarning->setVisible(disc.isAudio());
}

void DiscSummaryView::setEjectEnabled(bool enabled) {
    m_eject->setEnabled(enabled);
}

#include "moc_DiscSummaryView.cpp"
