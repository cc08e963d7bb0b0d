// SPDX-License-Identifier: MIT
#include "answer.h"
#include "command.h"
#include "sensoroptions.h"
#include "texttable.h"
#include "validators.h"

#include "shared/outputfile.h"
#include "shared/simulatedbench.h"
#include "shared/videoplot.h"

#include <SondixQt/namelookup.h>

#include <CLI/CLI.hpp>

#include <QBuffer>
#include <QDateTime>
#include <QJsonArray>

#include <optional>

using namespace SondixQt;
using namespace SondixApp;

namespace {

using SignalNames = QMap<int, QString>;

struct VideoLine
{
    int position = 0;
    QString name;
    int resolution = 0;
    QVector<int> pixels;
};

/// The video settings of a sensor.
struct VideoState
{
    SignalNames available;
    SignalNames enabled;
    bool supported = false;
    bool videoMode = false;
    int pixels = 0;
    int resolution = 0;
};

QString shortNameOf(const QString &name)
{
    return QString(name).remove(QStringLiteral("OutputVideo"));
}

Failure failed(const QString &text)
{
    return {ExitCode::Failed, text};
}

class VideoCommand : public Command
{
public:
    explicit VideoCommand(CLI::App &app)
    {
        m_sensor.addTo(app);
        app.add_option("--on", m_on, "Switch this video signal on, by position or name; changes the sensor")
            ->check(Validators::notEmpty());
        app.add_flag("--video-mode", m_videoMode,
                     "Switch the sensor to a mode in which it sends video; changes the sensor");
        app.add_option(
               "--line", m_target,
               "Fetch one line of a signal that is on: drawn into this PNG file, as numbers in this CSV file, or "
               "as text with -")
            ->check(Validators::notEmpty());
        app.add_option(
               "--signal", m_signal,
               "The signal for --line, by position or name (default: the one of --on, or the first that is on)")
            ->check(Validators::notEmpty());
        app.add_flag("--json", m_json, "Print one JSON object; with --line it contains the pixels");
        app.footer(app.get_footer() + "\nExample:\n  sondixqt video CC430@TCP/IP,address=169.254.168.150 "
                                      "--video-mode --on 0 --line video.png");
    }

    ExitCode run(Console &console, InterruptWatcher &interrupt) override
    {
        checkUse();
        const SensorAddress address = m_sensor.resolve(console, interrupt);
        const auto instance = openSensor(address);
        // Some models cannot report whether they send video: the instance must be told.
        if (isWorkToDo())
            instance->setVideoTransmitted(true);
        VideoState state = readState(*instance);
        std::optional<VideoLine> line;
        if (isWorkToDo())
            line = work(*instance, state);
        instance->close();
        if (line && m_target != "-")
            saveLine(*line, address);
        if (m_json)
            printJson(console, address, state, line);
        else if (line)
            printLine(console, *line);
        else
            printText(console, state, address.type);
        return ExitCode::Done;
    }

private:
    bool isFile(const char *ending) const
    {
        return QString::fromStdString(m_target).endsWith(QLatin1String(ending), Qt::CaseInsensitive);
    }
    bool isWorkToDo() const { return m_videoMode || !m_on.empty() || !m_target.empty(); }

    void checkUse() const
    {
        if (m_target.empty() && !m_signal.empty())
            throw Failure{ExitCode::Usage, QStringLiteral("--signal goes with --line")};
        const QString target = QString::fromStdString(m_target);
        if (!target.isEmpty() && target != QLatin1String("-") && !isFile(".png") && !isFile(".csv"))
            throw Failure{ExitCode::Usage,
                          QStringLiteral("--line takes a file whose name ends with .png or .csv, or -, not '%1'")
                              .arg(target)};
    }

    static VideoState readState(SensorInstance &instance)
    {
        TransmittedDataInfo frame;
        QString text;
        if (instance.transmittedDataInfo(frame, &text) != NoError)
            throw Failure{ExitCode::Refused,
                          QStringLiteral("the sensor does not describe its data: %1").arg(text)};
        VideoState state;
        instance.getAvailableVideoSignals(&state.available);
        instance.getEnabledVideoSignals(&state.enabled);
        state.supported = instance.isVideoSupported();
        state.videoMode = instance.isVideoModeEnabled();
        state.pixels = instance.getVideoSignalPixelCount();
        state.resolution = instance.getVideoResolution();
        return state;
    }

    // Carries out --video-mode, --on and --line.
    std::optional<VideoLine> work(SensorInstance &instance, VideoState &state) const
    {
        if (state.available.isEmpty())
            throw failed(QStringLiteral("%1 has no video").arg(sensorName(instance.sensorType(), true)));
        if (!state.supported)
            throw failed(QStringLiteral("video is not available over this interface"));
        const std::optional<int> on = positionOf(state.available, m_on);
        const std::optional<int> chosen = positionOf(state.available, m_signal);
        if (m_videoMode) {
            QString text;
            Answer::check(instance.enableVideoMode(&text), QStringLiteral("to switch to video"), text);
        }
        if (on)
            switchOn(instance, *on);
        if (on || m_videoMode) {
            state = readState(instance);
            if (on && !state.enabled.contains(*on))
                throw Failure{ExitCode::Refused,
                              QStringLiteral("the sensor did not switch %1 on").arg(state.available.value(*on))};
        }
        if (m_target.empty())
            return std::nullopt;
        const int firstOn = state.enabled.isEmpty() ? 0 : state.enabled.firstKey();
        return fetch(instance, state, chosen.value_or(on.value_or(firstOn)));
    }

    static std::optional<int> positionOf(const SignalNames &available, const std::string &text)
    {
        if (text.empty())
            return std::nullopt;
        const QString wanted = QString::fromStdString(text);
        bool isNumber = false;
        const int number = wanted.toInt(&isNumber);
        QStringList names;
        for (auto it = available.cbegin(); it != available.cend(); ++it) {
            names += it.value();
            if ((isNumber && it.key() == number) || it.value().compare(wanted, Qt::CaseInsensitive) == 0 ||
                shortNameOf(it.value()).compare(wanted, Qt::CaseInsensitive) == 0)
                return it.key();
        }
        throw Failure{ExitCode::Usage,
                      unknownNameText(QStringLiteral("video signal"), wanted, names,
                                      QStringLiteral("the signals are %1").arg(names.join(QLatin1String(", "))))};
    }

    static void switchOn(SensorInstance &instance, int position)
    {
        QString text;
        Answer::check(instance.enableVideoSignal(position, 1, &text),
                      QStringLiteral("to switch the video signal on"), text);
    }

    static VideoLine fetch(SensorInstance &instance, const VideoState &state, int position)
    {
        if (!state.enabled.contains(position))
            throw failed(QStringLiteral("%1 is off; '--on %2' switches it on")
                             .arg(state.available.value(position))
                             .arg(position));
        if (!state.videoMode)
            throw failed(QStringLiteral("the sensor is not in a mode in which it sends video; '--video-mode' "
                                        "switches to one"));
        const int place = state.enabled.keys().indexOf(position);
        QString name;
        if (!instance.getBinaryVideoParam(name, place))
            throw Failure{ExitCode::Refused,
                          QStringLiteral("the sensor does not transmit %1").arg(state.available.value(position))};
        QByteArray data;
        QString text;
        Answer::check(instance.sendCommand(QStringLiteral("Get_Video"), {},
                                           {{name, SensorInstance::resultPointer(&data)}}, &text),
                      QStringLiteral("Get_Video"), text);
        const auto pixels = videoPixels(data);
        if (!pixels)
            throw Failure{
                ExitCode::Refused,
                QStringLiteral("the sensor sends %1 bytes, which are no line of 16-bit pixels").arg(data.size())};
        return {position, state.available.value(position), state.resolution, *pixels};
    }

    static QByteArray pictureOf(const VideoLine &line, const VideoTexts &texts)
    {
        QByteArray data;
        QBuffer buffer(&data);
        const bool drawn = buffer.open(QIODevice::WriteOnly) &&
                           videoPicture(line.pixels, line.resolution, texts).save(&buffer, "PNG");
        if (!drawn)
            throw failed(QStringLiteral("cannot encode the picture"));
        return data;
    }

    void saveLine(const VideoLine &line, const SensorAddress &address) const
    {
        const VideoTexts texts{QStringLiteral("Video line of %1").arg(line.name), address.toString(),
                               QDateTime::currentDateTime().toString(Qt::ISODate), isSimulated()};
        const QByteArray data = isFile(".csv") ? videoCsv(line.pixels, texts) : pictureOf(line, texts);
        OutputFile file(QString::fromStdString(m_target));
        const bool written = file.open() && file.write(data);
        if (written && file.commit())
            return;
        if (!written)
            file.discard(); // it can be fetched again
        throw failed(QStringLiteral("cannot write '%1': %2").arg(file.path(), file.errorString()));
    }

    void printLine(Console &console, const VideoLine &line) const
    {
        constexpr int columns = 64;
        constexpr int rows = 16;
        if (m_target == "-")
            for (const QString &text : videoText(line.pixels, line.resolution, columns, rows))
                console.print(text);
        console.note(QStringLiteral("one line of %1, %2 pixels").arg(line.name).arg(line.pixels.size()));
    }

    static void printJson(Console &console, const SensorAddress &address, const VideoState &state,
                          const std::optional<VideoLine> &line)
    {
        QJsonArray array;
        for (auto it = state.available.cbegin(); it != state.available.cend(); ++it)
            array.append(QJsonObject{{QStringLiteral("position"), it.key()},
                                     {QStringLiteral("name"), it.value()},
                                     {QStringLiteral("on"), state.enabled.contains(it.key())}});
        QJsonObject object{{QStringLiteral("supported"), state.supported},
                           {QStringLiteral("videoMode"), state.videoMode},
                           {QStringLiteral("pixels"), state.pixels},
                           {QStringLiteral("resolution"), state.resolution},
                           {QStringLiteral("signals"), array}};
        if (line) {
            QJsonArray values;
            for (const int pixel : line->pixels)
                values.append(pixel);
            object.insert(QStringLiteral("line"), QJsonObject{{QStringLiteral("position"), line->position},
                                                              {QStringLiteral("name"), line->name},
                                                              {QStringLiteral("values"), values}});
        }
        Answer::printJson(console, address, object);
    }

    static void printText(Console &console, const VideoState &state, SensorType type)
    {
        if (state.available.isEmpty()) {
            console.note(QStringLiteral("%1 has no video").arg(sensorName(type, true)));
            return;
        }
        TextTable table({QStringLiteral("#"), QStringLiteral("SIGNAL"), QStringLiteral("STATE")});
        for (auto it = state.available.cbegin(); it != state.available.cend(); ++it)
            table.addRow({QString::number(it.key()), it.value(),
                          state.enabled.contains(it.key()) ? QStringLiteral("on") : QStringLiteral("off")});
        table.print(console);
        console.note(QStringLiteral("lines of %1 pixels with %2 steps; video mode %3%4")
                         .arg(state.pixels)
                         .arg(state.resolution)
                         .arg(state.videoMode ? QStringLiteral("on") : QStringLiteral("off"),
                              state.supported ? QString()
                                              : QStringLiteral("; video is not available over this interface")));
    }

    SensorOptions m_sensor;
    std::string m_on;
    std::string m_target;
    std::string m_signal;
    bool m_videoMode = false;
    bool m_json = false;
};

} // namespace

std::unique_ptr<Command> makeVideoCommand(CLI::App &app, CLI::App *&subcommand)
{
    subcommand = app.add_subcommand("video", "List the video signals of a sensor, switch one on, draw a line");
    return std::make_unique<VideoCommand>(*subcommand);
}
