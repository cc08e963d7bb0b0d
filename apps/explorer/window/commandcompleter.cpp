// SPDX-License-Identifier: MIT
#include "commandcompleter.h"

#include "explorer/sensor/parametermodel.h"

#include <QLineEdit>
#include <QStringListModel>

namespace Explorer {

namespace {

const char *const commonCommands[] = {
    "Get_Info", "Get_AllParameters", "Get_TransmittedDataInfo", "Get_Temperature", "Get_Video", "Clear_Buffers",
};

} // namespace

CommandCompleter::CommandCompleter(QObject *parent)
    : QCompleter(parent)
{
    setModel(new QStringListModel(this));
    setCaseSensitivity(Qt::CaseInsensitive);
    setCompletionMode(QCompleter::PopupCompletion);
    setFilterMode(Qt::MatchContains);
    setModelOfSensor(nullptr);
}

void CommandCompleter::setModelOfSensor(const ParameterModel *model)
{
    QStringList words;
    for (const char *command : commonCommands)
        words += QLatin1String(command);
    const SensorSettings settings = model ? model->settings() : SensorSettings();
    for (auto group = settings.cbegin(); group != settings.cend(); ++group) {
        const QString command = group.key().section(QLatin1Char('#'), 0, 0);
        words += {command, QStringLiteral("Get_") + command.mid(4)};
        for (auto it = group->cbegin(); it != group->cend(); ++it)
            words += QStringLiteral("SP_%1=").arg(it.key().mid(3));
    }
    words.removeDuplicates();
    words.sort();
    static_cast<QStringListModel *>(this->model())->setStringList(words);
}

QStringList CommandCompleter::splitPath(const QString &path) const
{
    return {path.mid(path.lastIndexOf(QLatin1Char(' ')) + 1)};
}

QString CommandCompleter::pathFromIndex(const QModelIndex &index) const
{
    const auto *field = qobject_cast<const QLineEdit *>(widget());
    const QString typed = field ? field->text() : QString();
    return typed.left(typed.lastIndexOf(QLatin1Char(' ')) + 1) + QCompleter::pathFromIndex(index);
}

QStringList CommandCompleter::wordsOf(const QString &line)
{
    QStringList words;
    QString word;
    bool isQuoted = false;
    for (const QChar c : line) {
        if (c == QLatin1Char('"'))
            isQuoted = !isQuoted;
        if (!c.isSpace() || isQuoted) {
            word += c;
        } else if (!word.isEmpty()) {
            words += word;
            word.clear();
        }
    }
    return word.isEmpty() ? words : words + QStringList(word);
}

} // namespace Explorer
