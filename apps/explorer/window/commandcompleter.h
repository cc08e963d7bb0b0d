// SPDX-License-Identifier: MIT
#pragma once

#include <QCompleter>
#include <QStringList>

namespace Explorer {

class ParameterModel;

/// Completes the last word of a command line: the command first, then the parameters of its group.
class CommandCompleter : public QCompleter
{
    Q_OBJECT
public:
    explicit CommandCompleter(QObject *parent = nullptr);

    /// Offers the commands of the groups of \a model, and commands that sensors have in common.
    void setModelOfSensor(const ParameterModel *model);

    QStringList splitPath(const QString &path) const override;
    QString pathFromIndex(const QModelIndex &index) const override;

    /// The words of \a line; blanks within double quotes do not separate words.
    static QStringList wordsOf(const QString &line);

private:
    QStringList m_parameters;
};

} // namespace Explorer
