// SPDX-License-Identifier: MIT
#include "benchmenu.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace Explorer {

namespace {

QString sensorText(const BenchSensor &sensor)
{
    return QStringLiteral("%1 %2 (%3)").arg(sensor.model, sensor.serialNumber, sensor.place);
}

/// Adds \a menu with a name for tests.
QMenu *named(QMenu *menu, const char *name)
{
    menu->setObjectName(QLatin1String(name));
    menu->setEnabled(false);
    return menu;
}

} // namespace

BenchMenu::BenchMenu(BenchControl &control, QWidget *parent)
    : QMenu(tr("&Bench"), parent)
    , m_control(control)
{
    setObjectName(QStringLiteral("benchMenu"));
    addAction(tr("&Load a bench file ..."), this, &BenchMenu::askForBench);
    addAction(tr("Load the b&uilt-in bench"), this, [this] { load({}); });
    addSeparator();
    m_cables = named(addMenu(tr("&Plugged in")), "cablesMenu");
    m_silence = named(addMenu(tr("&Silent")), "silenceMenu");
    m_triggers = named(addMenu(tr("&Trigger")), "triggersMenu");
    addSeparator();
    m_inject = named(addMenu(tr("&Inject a fault")), "injectMenu");
    addAction(tr("Inject another fault ..."), this, &BenchMenu::askForFault)
        ->setObjectName(QStringLiteral("faultAction"));
    m_faults = named(addMenu(tr("&Remove a fault")), "faultsMenu");
    addAction(tr("Remove &all faults"), this, [this] {
        m_control.send({{QStringLiteral("do"), QStringLiteral("clear")}}, this,
                       [this](const QJsonObject &answer) { report(answer, tr("all faults removed")); });
    })->setObjectName(QStringLiteral("clearFaultsAction"));
    connect(this, &QMenu::aboutToShow, this, &BenchMenu::refresh);
}

void BenchMenu::refresh()
{
    m_control.send({{QStringLiteral("do"), QStringLiteral("sensors")}}, this, [this](const QJsonObject &answer) {
        fillSensors(BenchControl::sensors(answer));
        m_control.send({{QStringLiteral("do"), QStringLiteral("faults")}}, this,
                       [this](const QJsonObject &faults) {
                           fillFaults(BenchControl::faults(faults));
                           Q_EMIT refreshed();
                       });
    });
}

void BenchMenu::askForBench()
{
    auto *dialog = new QFileDialog(parentWidget(), tr("Load a bench file"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilters({tr("Bench files (*.json)"), tr("All files (*)")});
    connect(dialog, &QFileDialog::fileSelected, this, &BenchMenu::load);
    dialog->open();
}

void BenchMenu::load(const QString &file)
{
    m_control.load(file, this, [this, file](const QJsonObject &answer) {
        report(answer, file.isEmpty() ? tr("built-in bench loaded") : tr("bench loaded: %1").arg(file));
        if (BenchControl::error(answer).isEmpty())
            Q_EMIT benchLoaded();
    });
}

void BenchMenu::fillSensors(const QVector<BenchSensor> &sensors)
{
    m_sensors = sensors;
    // clear() leaves the menus that it removes. Later: one of them may be the sender at present.
    const QList<QAction *> injectable = m_inject->actions();
    for (const QAction *sensor : injectable)
        sensor->menu()->deleteLater();
    for (QMenu *menu : {m_cables, m_silence, m_triggers, m_inject}) {
        menu->clear();
        menu->setEnabled(!sensors.isEmpty());
    }
    for (const BenchSensor &sensor : sensors) {
        const QString text = sensorText(sensor);
        const QString serial = sensor.serialNumber;
        QAction *cable = m_cables->addAction(text);
        cable->setCheckable(true);
        cable->setChecked(sensor.isPlugged);
        connect(cable, &QAction::triggered, this, [this, serial, text](bool on) {
            m_control.setPlugged(serial, on, this, [this, text, on](const QJsonObject &answer) {
                report(answer, on ? tr("%1 plugged in").arg(text) : tr("%1 unplugged").arg(text));
            });
        });
        QAction *silent = m_silence->addAction(text);
        silent->setCheckable(true);
        silent->setChecked(sensor.isSilent);
        connect(silent, &QAction::triggered, this, [this, serial, text](bool on) {
            m_control.setSilent(serial, on, this, [this, text, on](const QJsonObject &answer) {
                report(answer, on ? tr("%1 sends nothing").arg(text) : tr("%1 sends again").arg(text));
            });
        });
        connect(m_triggers->addAction(text), &QAction::triggered, this, [this, serial, text] {
            m_control.trigger(serial, this, [this, text](const QJsonObject &answer) {
                report(answer, tr("%1 triggered").arg(text));
            });
        });
        QMenu *faults = m_inject->addMenu(text);
        const auto addFault = [this, faults, serial](const QString &title, const QJsonObject &fault) {
            connect(faults->addAction(title), &QAction::triggered, this,
                    [this, serial, title, fault] { injectPrepared(serial, title, fault); });
        };
        const QJsonObject transfer{{QStringLiteral("function"), QStringLiteral("TransferDataTS")}};
        QJsonObject failing = transfer;
        failing.insert(QStringLiteral("code"), -1);
        failing.insert(QStringLiteral("text"), QStringLiteral("Injected: the transfer fails"));
        failing.insert(QStringLiteral("times"), 1);
        addFault(tr("The next transfer fails"), failing);
        QJsonObject slow{{QStringLiteral("function"), QStringLiteral("SensorCommand")},
                         {QStringLiteral("delay"), 2.0}};
        addFault(tr("Every command takes two seconds"), slow);
        QJsonObject refused{{QStringLiteral("function"), QStringLiteral("SensorCommand")},
                            {QStringLiteral("code"), -2},
                            {QStringLiteral("text"), QStringLiteral("Injected: the command is refused")}};
        addFault(tr("Every command is refused"), refused);
        QJsonObject hanging{{QStringLiteral("function"), QStringLiteral("SensorCommand")},
                            {QStringLiteral("hang"), true},
                            {QStringLiteral("times"), 1}};
        addFault(tr("The next command hangs until all faults are removed"), hanging);
    }
}

void BenchMenu::fillFaults(const QVector<BenchFault> &faults)
{
    m_faults->clear();
    m_faults->setEnabled(!faults.isEmpty());
    for (const BenchFault &fault : faults) {
        const QString text = tr("%1: %2").arg(QString::number(fault.number), fault.description);
        connect(m_faults->addAction(text), &QAction::triggered, this, [this, text, number = fault.number] {
            m_control.send(
                {{QStringLiteral("do"), QStringLiteral("clear")}, {QStringLiteral("fault"), number}}, this,
                [this, text](const QJsonObject &answer) { report(answer, tr("fault removed: %1").arg(text)); });
        });
    }
}

void BenchMenu::injectPrepared(const QString &serialNumber, const QString &title, const QJsonObject &fault)
{
    QJsonObject request = fault;
    request.insert(QStringLiteral("do"), QStringLiteral("inject"));
    if (!serialNumber.isEmpty())
        request.insert(QStringLiteral("sensor"), serialNumber);
    m_control.send(request, this, [this, serialNumber, title](const QJsonObject &answer) {
        report(answer, tr("fault injected into %1: %2")
                           .arg(serialNumber.isEmpty() ? tr("all sensors") : serialNumber, title));
    });
}

void BenchMenu::askForFault()
{
    auto *dialog = new QDialog(parentWidget());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName(QStringLiteral("faultDialog"));
    dialog->setWindowTitle(tr("Inject a fault"));
    auto *form = new QFormLayout(dialog);
    auto *sensor = new QComboBox(dialog);
    sensor->addItem(tr("all sensors"), QString());
    for (const BenchSensor &each : qAsConst(m_sensors))
        sensor->addItem(sensorText(each), each.serialNumber);
    auto *command = new QLineEdit(dialog);
    command->setObjectName(QStringLiteral("command"));
    command->setPlaceholderText(QStringLiteral("Get_Info"));
    auto *code = new QSpinBox(dialog);
    code->setRange(-32768, -1);
    code->setValue(-1);
    auto *text = new QLineEdit(tr("Injected fault"), dialog);
    auto *times = new QSpinBox(dialog);
    times->setRange(0, 1'000'000);
    times->setSpecialValueText(tr("always"));
    times->setValue(1);
    form->addRow(tr("&Sensor:"), sensor);
    form->addRow(tr("Co&mmand:"), command);
    form->addRow(tr("&Error number:"), code);
    form->addRow(tr("Error te&xt:"), text);
    form->addRow(tr("&Times:"), times);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QPushButton *ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(tr("Inject"));
    ok->setEnabled(false);
    connect(command, &QLineEdit::textChanged, ok,
            [ok](const QString &entered) { ok->setEnabled(!entered.trimmed().isEmpty()); });
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    connect(dialog, &QDialog::accepted, this, [this, sensor, command, code, text, times] {
        const QString name = command->text().trimmed();
        injectPrepared(sensor->currentData().toString(), name,
                       {{QStringLiteral("command"), name},
                        {QStringLiteral("code"), code->value()},
                        {QStringLiteral("text"), text->text()},
                        {QStringLiteral("times"), times->value() == 0 ? -1 : times->value()}});
    });
    dialog->open();
}

void BenchMenu::report(const QJsonObject &answer, const QString &done)
{
    const QString error = BenchControl::error(answer);
    Q_EMIT happened(error.isEmpty() ? done : tr("The bench refuses: %1").arg(error), !error.isEmpty());
}

} // namespace Explorer
