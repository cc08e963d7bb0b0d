// SPDX-License-Identifier: MIT
#include "sensorpage.h"

#include "look.h"

#include "explorer/sensor/parameternames.h"
#include "explorer/sensor/sensorsession.h"

#include <SondixQt/parameterpresentation.h>
#include <SondixQt/sensorinfo.h>

#include <QComboBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QTableWidget>
#include <QVBoxLayout>

using namespace SondixQt;

namespace Explorer {

namespace {

const QLatin1String keepKey("history/keepSeconds");
constexpr double defaultKeep = 600.0;

QLabel *wrappedText()
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText); // the text comes from the sensor
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

// A field can be narrower than its text, and be read and copied with the keyboard.
QLineEdit *valueField(const QString &name, const QString &text)
{
    auto *field = new QLineEdit(text);
    field->setReadOnly(true);
    field->setFrame(false);
    field->setAccessibleName(name);
    field->setToolTip(text.toHtmlEscaped());
    field->setCursorPosition(0);
    QPalette colours = field->palette();
    colours.setColor(QPalette::Base, Qt::transparent);
    field->setPalette(colours);
    return field;
}

QString shownRange(const SignalInfo &info)
{
    const auto number = [](double value) { return QLocale().toString(value, 'g', 8); };
    return QStringLiteral("%1 \u2026 %2").arg(number(info.scaledRangeMin), number(info.scaledRangeMax));
}

QTableWidgetItem *cell(const QString &text)
{
    auto *item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    return item;
}

} // namespace

SensorPage::SensorPage(QWidget *parent)
    : QWidget(parent)
    , m_picture(new QLabel)
    , m_title(wrappedText())
    , m_state(new QLabel)
    , m_problem(wrappedText())
    , m_reopen(new QPushButton(tr("Open again")))
    , m_identityLayout(new QFormLayout)
    , m_signals(new QTableWidget)
    , m_rate(new QLabel)
    , m_keep(new QComboBox)
    , m_memory(new QLabel)
    , m_empty(wrappedText())
    , m_content(new QWidget)
{
    setObjectName(QStringLiteral("sensorPage"));
    m_state->setObjectName(QStringLiteral("sensorState"));
    m_problem->setObjectName(QStringLiteral("sensorProblem"));
    m_reopen->setObjectName(QStringLiteral("reopenButton"));
    QFont bold = font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.25);
    m_title->setFont(bold);
    m_picture->setFixedSize(96, 96);
    m_rate->setWordWrap(true);
    m_empty->setText(
        tr("No sensor is open. Here you will see what it is, how it is connected, and what it sends."));
    makePlaceholder(*m_empty);
    m_identityLayout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto *heading = new QGridLayout;
    heading->addWidget(m_picture, 0, 0, 3, 1);
    heading->addWidget(m_title, 0, 1);
    heading->addWidget(m_state, 1, 1);
    heading->setRowStretch(2, 1);
    heading->setColumnStretch(1, 1);

    m_signals->setColumnCount(3);
    m_signals->setHorizontalHeaderLabels({tr("Signal"), tr("Unit"), tr("Range")});
    m_signals->verticalHeader()->hide();
    m_signals->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_signals->horizontalHeader()->setStretchLastSection(true);
    m_signals->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    m_signals->setAccessibleName(tr("Signals of the sensor"));
    m_signals->setAlternatingRowColors(true);
    m_signals->setMinimumHeight(90);

    auto *content = new QVBoxLayout(m_content);
    content->addLayout(heading);
    content->addWidget(m_problem);
    content->addWidget(m_reopen, 0, Qt::AlignLeft);
    content->addLayout(m_identityLayout);
    content->addWidget(m_rate);
    content->addWidget(makeKeptField());
    content->addWidget(m_signals, 1);
    auto *area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // long values are wrapped
    area->setWidget(m_content);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area);
    layout->addWidget(m_empty, 1);
    connect(m_reopen, &QPushButton::clicked, this, [this] {
        if (m_session)
            m_session->reopen();
    });
    setMinimumWidth(34 * fontMetrics().averageCharWidth());
    setSession(nullptr);
}

double SensorPage::chosenKeepSeconds()
{
    const double seconds = QSettings().value(keepKey, defaultKeep).toDouble();
    return seconds >= 1.0 ? seconds : defaultKeep;
}

QWidget *SensorPage::makeKeptField()
{
    m_keep->setObjectName(QStringLiteral("keepValues"));
    m_keep->setAccessibleName(tr("For how long values are kept"));
    m_memory->setObjectName(QStringLiteral("keptMemory"));
    m_memory->setToolTip(tr("The memory that the values of this sensor need at most. Older values are dropped."));
    for (const auto &[text, seconds] :
         {std::pair(tr("1 minute"), 60.0), std::pair(tr("10 minutes"), 600.0), std::pair(tr("1 hour"), 3600.0),
          std::pair(tr("8 hours"), 28800.0), std::pair(tr("1 day"), 86400.0)})
        m_keep->addItem(text, seconds);
    connect(m_keep, QOverload<int>::of(&QComboBox::activated), this,
            [this] { keepFor(m_keep->currentData().toDouble()); });
    auto *field = new QWidget;
    auto *layout = new QGridLayout(field);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(tr("Values kept")), 0, 0);
    layout->addWidget(m_keep, 0, 1);
    layout->addWidget(m_memory, 1, 1);
    layout->setColumnStretch(2, 1);
    return field;
}

void SensorPage::keepFor(double seconds)
{
    QSettings().setValue(keepKey, seconds);
    m_session->history().setKeepSeconds(seconds);
    showKept();
}

void SensorPage::showKept()
{
    const SignalHistory &history = m_session->history();
    m_keep->setCurrentIndex(m_keep->findData(history.keepSeconds()));
    const std::optional<double> rate = m_session->rate();
    if (!rate || m_session->frame().valuesPerFrame < 1) {
        m_memory->clear();
        return;
    }
    const qint64 needed = SignalHistory::bytesFor(history.keepSeconds(), *rate, m_session->frame().valuesPerFrame);
    const qint64 limit = history.limitBytes();
    const QString memory = tr("at most %1").arg(QLocale().formattedDataSize(qMin(needed, limit)));
    if (needed <= limit) {
        m_memory->setText(memory);
        return;
    }
    const double seconds = history.keepSeconds() * static_cast<double>(limit) / static_cast<double>(needed);
    m_memory->setText(tr("%1:\nonly about %2", "memory, duration").arg(memory, shownDuration(seconds)));
}

void SensorPage::setSession(SensorSession *session)
{
    if (m_session)
        m_session->disconnect(this);
    m_session = session;
    m_shown = {}; // another session may be where a destroyed one was
    m_content->setVisible(session);
    m_empty->setVisible(!session);
    if (!session)
        return;
    connect(session, &SensorSession::changed, this, &SensorPage::showState);
    connect(session, &SensorSession::changed, this, &SensorPage::showIdentity);
    connect(session, &SensorSession::frameChanged, this, &SensorPage::showFrame);
    connect(session, &QObject::destroyed, this, [this, session] {
        if (m_session == session)
            setSession(nullptr);
    });
    showState();
    showIdentity();
    showFrame();
}

void SensorPage::showState()
{
    const SensorReader::State state = m_session->state();
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, colourOf(state, palette()));
    m_state->setPalette(colours);
    m_state->setText(QStringLiteral("%1 %2").arg(symbolOf(state), m_session->stateText()));
    const QString problem = m_session->problem();
    m_problem->setText(problem);
    m_problem->setVisible(!problem.isEmpty());
    m_reopen->setVisible(state == SensorReader::Failed || state == SensorReader::Stopped);
}

void SensorPage::showIdentity()
{
    const QString title = m_session->title();
    QMap<QString, QVariant> parameters = m_session->information();
    const auto sensors = m_session->reader().sensorInformation();
    if (m_shown.session == m_session && m_shown.title == title && m_shown.sensors == sensors)
        return;
    m_shown = {m_session, title, sensors};
    m_title->setText(title);
    m_picture->setPixmap(getSensorImage(m_session->model()));
    m_picture->setScaledContents(true);
    while (m_identityLayout->rowCount() > 0)
        m_identityLayout->removeRow(0);
    const auto add = [this](const QString &name, const QString &value) {
        if (!value.isEmpty())
            m_identityLayout->addRow(name, valueField(name, value));
    };
    const SensorAddress &address = m_session->address();
    add(tr("Model"), sensorName(m_session->model()));
    for (const auto &[name, answer] : {std::pair(tr("Name"), QStringLiteral("SA_Sensor")),
                                       std::pair(tr("Serial number"), QStringLiteral("SA_SerialNumber")),
                                       std::pair(tr("Article number"), QStringLiteral("SA_ArticleNumber")),
                                       std::pair(tr("Firmware"), QStringLiteral("SA_Softwareversion"))})
        add(name, parameters.value(answer).toString());
    for (int i = 1; i < sensors.size(); ++i)
        add(tr("Sensor %1").arg(i + 1),
            QStringLiteral("%1 %2").arg(sensors.at(i).value(QStringLiteral("SA_Sensor")).toString(),
                                        sensors.at(i).value(QStringLiteral("SA_SerialNumber")).toString()));
    add(tr("Connected"), interfaceName(address.interfaceType()));
    // How it is connected, with the names of the library.
    for (auto it = address.parameters.cbegin(); it != address.parameters.cend(); ++it)
        parameters.insert(it.key(), it.value());
    const QMap<QString, QVariant> basic = extractBasicParameters(SensorInfo(parameters, m_session->model()));
    for (auto it = basic.cbegin(); it != basic.cend(); ++it) {
        const bool isShown =
            it.key().startsWith(QLatin1String("SA_")) || it.key() == InterfaceParameter::Interface;
        if (const QString name = friendlyName(it.key()); !isShown && !name.isEmpty())
            add(name, it->toString());
    }
    add(tr("Address"), address.toString());
}

void SensorPage::showFrame()
{
    const TransmittedDataInfo &frame = m_session->frame();
    m_signals->setRowCount(frame.signalList().size());
    for (int i = 0; i < frame.signalList().size(); ++i) {
        const SignalInfo &info = frame.signalList().at(i);
        m_signals->setItem(i, 0, cell(info.scaledName));
        m_signals->setItem(i, 1, cell(info.scaledUnit));
        m_signals->setItem(i, 2, cell(shownRange(info)));
    }
    const std::optional<double> rate = m_session->rate();
    m_rate->setText(frame.valuesPerFrame < 1 ? tr("The sensor has not described its values yet.")
                                             : tr("Values per frame: %1. Frames: %2.")
                                                   .arg(frame.valuesPerFrame)
                                                   .arg(rate ? shownRate(*rate) : tr("rate not reported")));
    showKept();
}

} // namespace Explorer
