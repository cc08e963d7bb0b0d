// SPDX-License-Identifier: MIT
#include "recordfile.h"

#include "exitcode.h"

#include <QFile>

sondixrec::Record readRecordFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Failure{ExitCode::Failed, QStringLiteral("cannot read %1: %2").arg(path, file.errorString())};
    const QByteArray content = file.readAll();
    try {
        return sondixrec::readRecord({content.constData(), static_cast<std::size_t>(content.size())},
                                     path.toStdString());
    } catch (const sondixrec::RecordError &error) {
        throw Failure{ExitCode::Failed, QString::fromUtf8(error.what())};
    }
}
