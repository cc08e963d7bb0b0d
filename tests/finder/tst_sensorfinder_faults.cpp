// SPDX-License-Identifier: MIT
#include "scriptedsearch.h"
#include "support/faultkinds.h"

#include <QLoggingCategory>

#include <memory>
#include <vector>

using namespace SondixQt;
using namespace std::chrono_literals;

namespace {

void loadSearchedBench()
{
    sondixsim::loadBench(R"({ "clock": { "virtual": true },
        "search": { "TCP/IP": 0, "WinUSB": 0, "DriverX_USB": 0, "USBIO": 0, "RS232": 0, "XA100_USB": 0, "XA100": 0,
                    "XA200": 0, "XA200_ETH": 0 },
        "sensors": [
          { "model": "TX270", "serialNumber": "101", "place": { "interface": "RS232", "port": "COM1" } },
          { "model": "TX270", "serialNumber": "102", "place": { "interface": "WinUSB" } },
          { "model": "TX270", "serialNumber": "103", "place": { "interface": "TCP/IP", "ip": "192.168.0.10" } },
          { "model": "CC430", "serialNumber": "201", "place": { "interface": "TCP/IP", "ip": "192.168.0.11" } } ] })");
    sondixsim::recordCalls(true);
}

const QSet<QString> searched = {"101", "102", "103"};

/// A search that meets a fault.
class DisturbedSearch
{
public:
    enum Phase { Start, Progress };

    DisturbedSearch(const QString &function, const FaultKind &kind, Phase phase)
        : m_name(QString("%1 %2 %3").arg(function, kind.name).arg(phase == Start ? "at the start" : "later"))
        , m_effect(kind.effect)
        , m_mayMiss(phase == Progress && kind.effect == FaultKind::Fails &&
                    (function == "SetParameterInt" || function == "GetParameters"))
        , m_recorder(m_finder, scriptedsearch::Recorder::WithErrors)
    {
        if (m_effect != FaultKind::Delays)
            m_finder.setTimeLimit(2s); // a search whose progress cannot be read goes on
        sondixsim::Fault fault = kind.fault;
        fault.function = function.toStdString();
        m_finder.setSearchInterface(RS232, true);
        sondixsim::clearCalls();
        if (phase == Start) {
            const int number = sondixsim::inject(fault);
            m_finder.startSearch(TX270);
            sondixsim::removeFault(number);
            return;
        }
        m_finder.startSearch(TX270);
        for (const sondixsim::Call &call : sondixsim::calls())
            fault.handle = call.handle; // all are of this search
        sondixsim::inject(fault);
    }

    bool hasEnded() const { return m_finder.status() != SensorFinder::Searching; }
    const QString &name() const { return m_name; }

    /// What is wrong with its result; empty: nothing.
    QString mistake() const
    {
        QSet<QString> found;
        for (const SensorInfo &info : m_recorder.found) {
            const QString serialNumber = info.getParameter("SA_SerialNumber").toString();
            // An answer that changed on its way may name any sensor.
            if (m_effect != FaultKind::ChangesAnswer && !searched.contains(serialNumber))
                return "it has invented " + serialNumber;
            if (m_effect != FaultKind::ChangesAnswer && found.contains(serialNumber))
                return serialNumber + " comes twice";
            found += serialNumber;
        }
        const bool hasFailed = m_finder.error() != NoError;
        if (hasFailed && m_finder.errorString().isEmpty())
            return "its failure has no text";
        if (m_effect == FaultKind::Delays && hasFailed)
            return "it failed";
        if (m_effect != FaultKind::ChangesAnswer && !hasFailed && !m_mayMiss && found != searched)
            return QString("it has found %1 without a failure").arg(found.size());
        return {};
    }

private:
    const QString m_name;
    const FaultKind::Effect m_effect;
    const bool m_mayMiss; ///< a sensor whose description cannot be read is not reported
    SensorFinder m_finder;
    const scriptedsearch::Recorder m_recorder;
};

} // namespace

/// Every function of the sensor-access library with every kind of fault, as a search meets them.
class TestSensorFinderFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules("SondixQt.*=false"); }
    void cleanupTestCase() { QLoggingCategory::setFilterRules({}); }
    void cleanup() { sondixsim::clearFaults(); }

    void everySearchEndsWithWhatIsThere();
};

void TestSensorFinderFaults::everySearchEndsWithWhatIsThere()
{
    loadSearchedBench();
    // All at the same time: each waits for its timer most of the time.
    const HangReleaser releaser; // also while the searches are destroyed
    std::vector<std::unique_ptr<DisturbedSearch>> searches;
    for (const auto phase : {DisturbedSearch::Start, DisturbedSearch::Progress}) {
        for (const char *const function : sondixsim::functionNames) {
            if (phase == DisturbedSearch::Progress && QByteArray(function) == "CreateSensorInstance")
                continue; // the search has its handle
            for (const FaultKind &kind : faultKinds()) {
                if (canAffect(kind, function))
                    searches.push_back(std::make_unique<DisturbedSearch>(function, kind, phase));
            }
        }
    }
    const auto haveEnded = [&] {
        return std::all_of(searches.begin(), searches.end(),
                           [](const auto &search) { return search->hasEnded(); });
    };
    QVERIFY(QTest::qWaitFor(haveEnded, 60000));
    QStringList mistakes;
    for (const auto &search : searches) {
        if (!search->mistake().isEmpty())
            mistakes += search->name() + ": " + search->mistake();
    }
    QVERIFY2(mistakes.isEmpty(), qPrintable(mistakes.join('\n')));
}

QTEST_GUILESS_MAIN(TestSensorFinderFaults)
#include "tst_sensorfinder_faults.moc"
