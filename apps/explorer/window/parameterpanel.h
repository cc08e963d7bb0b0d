// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>
#include <QWidget>

class QAction;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QTreeView;
class QUndoGroup;

namespace Explorer {

class CommandCompleter;
class DiskThread;
struct ParameterFile;
class ParameterModel;
class SensorSession;

/// The settings of a sensor: changed in place, undone, compared, saved and loaded, and a line for any other command.
class ParameterPanel : public QWidget
{
    Q_OBJECT
public:
    /// Changes are undone through the stacks that the panel adds to \a undoGroup.
    explicit ParameterPanel(QUndoGroup &undoGroup, QWidget *parent = nullptr);

    /// Shows the settings of \a session, which are \a model; both null: nothing.
    void setSession(SensorSession *session, ParameterModel *model);

    /// \name Files
    /// A thread of its own reads and writes them; fileDone() follows, and a problem is shown in the panel. False if there
    /// are no settings of a sensor.
    /// \{
    bool saveTo(const QString &path);
    bool loadFrom(const QString &path);
    /// Compares the settings with those of a file.
    bool compareWith(const QString &path);
    /// The file that is proposed for the settings of the sensor.
    QString proposedPath() const;
    /// \}
    /// Sends the command \a line, such as "Get_Temperature" or "Set_LaserPower SP_LaserPower=0". False with a message
    /// in the panel if it is not a command.
    bool sendLine(const QString &line);

    /// For menus: save, load, compare.
    QList<QAction *> fileActions() const { return m_fileActions; }

Q_SIGNALS:
    /// The file \a path was saved, loaded or compared with, or was not for the reason \a problem.
    void fileDone(const QString &path, const QString &problem);
    /// For the log: a command and its answer.
    void answered(const QString &source, const QString &text, bool isProblem);

private:
    QWidget *makeBar();
    QWidget *makeCommandLine();
    void makeFileActions();
    void connectModel();
    void showMessage(const QString &text, bool isProblem);
    bool readFile(const QString &path, QString (ParameterPanel::*use)(const ParameterFile &, const QString &));
    void endFile(const QString &path, const QString &problem);
    QString otherModel(const ParameterFile &file, const QString &name) const;
    QString apply(const ParameterFile &file, const QString &path);
    QString compare(const ParameterFile &file, const QString &path);
    void showSize();
    QString chosenFile(bool forSaving);
    QAction *fileAction(const QString &text, const char *name, bool forSaving,
                        bool (ParameterPanel::*function)(const QString &));

    QUndoGroup &m_undoGroup;
    QPointer<SensorSession> m_session;
    QPointer<ParameterModel> m_model;
    QList<QAction *> m_fileActions;
    QLineEdit *m_filter;
    QTreeView *m_view;
    QLabel *m_message;
    QLabel *m_empty;
    QPushButton *m_ask;
    QLineEdit *m_command;
    QWidget *m_content;
    QString m_folder;
    DiskThread *m_disk;
};

} // namespace Explorer
