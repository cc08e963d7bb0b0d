// SPDX-License-Identifier: MIT
#pragma once

#include <SondixSimulator/control.h>

#include <QByteArray>

#include <string>

/// \file
/// Scripted answers and failures of the simulated sensors.

constexpr char scriptedFailure[] = "told to fail";

/// From now on \a command is answered with the "key=value" pairs \a answer. With a \a code it fails as well.
inline int scriptAnswer(const std::string &command, const QByteArray &answer, int code = 0)
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.answer = answer.toStdString();
    fault.code = code;
    fault.text = scriptedFailure;
    return sondixsim::inject(fault);
}

/// From now on \a command fails with \a code. With \a silent, GetError() reports no error.
inline int scriptCommandFailure(const std::string &command, int code, const std::string &text = scriptedFailure,
                                bool silent = false)
{
    sondixsim::Fault fault;
    fault.command = command;
    fault.code = code;
    fault.text = text;
    fault.silent = silent;
    return sondixsim::inject(fault);
}

/// From now on staging or reading \a parameter fails with \a code.
inline int scriptParameterFailure(const std::string &parameter, int code,
                                  const std::string &text = scriptedFailure)
{
    sondixsim::Fault fault;
    fault.parameter = parameter;
    fault.code = code;
    fault.text = text;
    return sondixsim::inject(fault);
}

/// From now on the C function \a function fails with \a code. With \a silent, GetError() reports no error.
inline int scriptFailure(const std::string &function, int code, const std::string &text = scriptedFailure,
                         bool silent = false)
{
    sondixsim::Fault fault;
    fault.function = function;
    fault.code = code;
    fault.text = text;
    fault.silent = silent;
    return sondixsim::inject(fault);
}

/// From now on the C function \a function reports the count \a count.
inline int scriptCount(const std::string &function, int count)
{
    sondixsim::Fault fault;
    fault.function = function;
    fault.count = count;
    return sondixsim::inject(fault);
}
