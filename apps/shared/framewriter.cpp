// SPDX-License-Identifier: MIT
#include "framewriter.h"

#include "csvwriter.h"
#include "jsonwriter.h"
#include "npywriter.h"

using namespace SondixQt;

namespace SondixApp {

std::unique_ptr<FrameWriter> makeFrameWriter(RecordFormat format, const RecordColumns &columns,
                                             const FormatOptions &options, ErrorValues &errors)
{
    switch (format) {
    case RecordFormat::JsonLines:
        return std::make_unique<JsonWriter>(columns, options, errors);
    case RecordFormat::Npy:
        return std::make_unique<NpyWriter>(columns, errors);
    case RecordFormat::Csv:
        break;
    }
    return std::make_unique<CsvWriter>(columns, options, errors);
}

QString gapReasonKey(DataGap::Reason reason)
{
    switch (reason) {
    case DataGap::LibraryOverrun:
        return QStringLiteral("libraryOverrun");
    case DataGap::ConsumerOverrun:
        return QStringLiteral("consumerOverrun");
    case DataGap::Disconnected:
        return QStringLiteral("disconnected");
    case DataGap::Restarted:
        return QStringLiteral("restarted");
    case DataGap::Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

std::optional<LastLine> lastLine(QFile &file, QString &problem)
{
    constexpr qint64 longest = 1 << 20;
    const qint64 size = file.size();
    const qint64 begin = size > longest ? size - longest : 0;
    if (!file.seek(begin)) {
        problem = file.errorString();
        return std::nullopt;
    }
    const QByteArray tail = file.read(size - begin);
    const int feed = tail.lastIndexOf('\n');
    if (feed < 0 && begin > 0) {
        problem = QStringLiteral("it does not consist of lines");
        return std::nullopt;
    }
    // After a power failure a file can end in zeros.
    QByteArray rest = tail.mid(feed + 1);
    rest.replace('\0', "");
    return LastLine{begin + feed + 1, rest};
}

} // namespace SondixApp
