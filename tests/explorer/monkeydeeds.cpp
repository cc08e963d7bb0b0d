// SPDX-License-Identifier: MIT
// What takes a person several events, and what happens to the sensors.
#include "monkey.h"

#include "explorer/application/extensions.h"
#include "explorer/extras/recordingwidget.h"
#include "explorer/window/sessionview.h"

#include <QLineEdit>
#include <QTimer>

using namespace Explorer;

namespace {

// The sensors that openSomething() opens.
const std::vector<std::string> &serialNumbers()
{
    static const std::vector<std::string> all{"1018001", "2421018", "2903344", "7160214", "2202207", "3003001"};
    return all;
}

} // namespace

void Monkey::openSomething()
{
    static const QStringList places{"TX270@RS232,port=COM3",
                                    "TX270@RS232,port=COM3",
                                    "CC430@TCP/IP,address=169.254.168.150",
                                    "TX290@TCP/IP,address=192.168.0.31",
                                    "RG52x@RS232,port=COM4",
                                    "TX220@XA100,card=0,channel=1",
                                    "TX300@WinUSB,device=0",
                                    "TX270@RS232,port=COM99",
                                    "nothing@all"};
    constexpr int maxPages = 4;
    if (m_window->views().size() >= maxPages)
        closeAPage();
    const QString what = chance(80) ? oneOf(places) : oneOf(m_files);
    note("open " + what);
    m_window->openArgument(what);
}

void Monkey::dropFile()
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(oneOf(m_files)), QUrl("http://localhost/")});
    note("drop");
    QDropEvent event({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&*m_window, &event);
}

void Monkey::toggleRecording()
{
    SessionView *const view = m_window->currentView();
    RecordingWidget *const recording = view ? m_extensions->recording(view) : nullptr;
    if (!recording || (recording->control().isRecording() && chance(60)))
        return;
    QSettings().setValue("recording/suffix", oneOf(RecordingControl::suffixes()));
    note("record " + view->title());
    recording->recordAction()->trigger();
}

void Monkey::sendCommand()
{
    auto *const line = m_window->findChild<QLineEdit *>("commandLine");
    if (!line || !line->isVisible() || !line->isEnabled())
        return;
    static const QStringList commands{"Get_Info",
                                      "Set_Samplerate SP_Measrate=1",
                                      "Set_MeasureMode SP_MeasureMode=1",
                                      "Set_MeasureMode SP_MeasureMode=0",
                                      "Clear_Buffers",
                                      "Get_Nothing",
                                      "Set_TriggerMode SP_TriggerMode=1",
                                      "Set_TriggerMode SP_TriggerMode=0"};
    const QString command = oneOf(commands);
    note("command " + command);
    line->setText(command);
    QTest::keyClick(line, Qt::Key_Return);
}

void Monkey::closeAPage()
{
    const QVector<SessionView *> views = m_window->views();
    if (views.isEmpty())
        return;
    note("close a page");
    m_window->closePage(oneOf(views));
}

void Monkey::leave()
{
    note("close the window");
    m_window->close();
}

void Monkey::atBench(const std::function<void()> &change)
{
    QMetaObject::invokeMethod(m_bench, [change] {
        try {
            change();
        } catch (const std::exception &) {
            // another bench was loaded, which does not have the sensor
        }
    });
}

void Monkey::pullOrPlug()
{
    const std::string serial = oneOf(serialNumbers());
    const bool isPlugged = chance(60);
    note(QString("%1 %2").arg(isPlugged ? "plug" : "unplug", QString::fromStdString(serial)));
    atBench([=] { isPlugged ? sondixsim::plug(serial) : sondixsim::unplug(serial); });
}

void Monkey::silence()
{
    const std::string serial = oneOf(serialNumbers());
    const bool isSilent = chance(40);
    note(QString("%1 %2").arg(isSilent ? "silence" : "end silence of", QString::fromStdString(serial)));
    atBench([=] { sondixsim::setSilent(serial, isSilent); });
}

void Monkey::trigger()
{
    const std::string serial = oneOf(serialNumbers());
    note("trigger " + QString::fromStdString(serial));
    atBench([=] { sondixsim::trigger(serial); });
}

void Monkey::injectFault()
{
    static const std::vector<std::string> functions{"OpenSensor",     "SensorCommand", "DataAvail",
                                                    "TransferDataTS", "GetParameters", "CloseSensor"};
    sondixsim::Fault fault;
    fault.function = oneOf(functions);
    fault.times = 1 + random(5);
    const int kind = random(10);
    if (kind == 0) {
        fault.hang = true;
        fault.times = 1;
    } else if (kind < 3) {
        fault.delay = 0.1 * random(10);
    } else if (kind < 5) {
        fault.answer = "SA_Nonsense=\x01;=,\"";
    } else {
        fault.code = -1 - random(300);
        fault.text = "Injected by the monkey";
    }
    note(QString("fault %1 in %2").arg(kind).arg(QString::fromStdString(fault.function)));
    atBench([=] { sondixsim::inject(fault); });
    if (fault.hang) // not much longer than the user waits
        QTimer::singleShot(50 + random(3000), this, [] { sondixsim::releaseHangs(); });
}

void Monkey::repairBench()
{
    note("repair the bench");
    sondixsim::releaseHangs();
    atBench([] {
        sondixsim::clearFaults();
        sondixsim::releaseHangs();
    });
    for (const std::string &serial : serialNumbers()) {
        atBench([=] { sondixsim::plug(serial); });
        atBench([=] { sondixsim::setSilent(serial, false); });
    }
}
