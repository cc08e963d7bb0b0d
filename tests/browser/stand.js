// SPDX-License-Identifier: MIT
import { spawn } from 'node:child_process';
import { createInterface } from 'node:readline';
import { setTimeout as sleep } from 'node:timers/promises';

/// A tunnel to a simulated sensor, in a separate process.
export class Stand {
    static async start() {
        const stand = new Stand();
        stand.process = spawn(process.env.SONDIXQT_TUNNELSTAND, { stdio: ['pipe', 'pipe', 'inherit'] });
        stand.waiting = [];
        stand.process.once('exit', code => stand.fail(new Error(`the tunnel's program has ended with ${code}`)));
        createInterface({ input: stand.process.stdout }).on('line', line => stand.waiting.shift().resolve(JSON.parse(line)));
        stand.url = (await stand.next()).url;
        return stand;
    }

    next() {
        return new Promise((resolve, reject) => this.waiting.push({ resolve, reject }));
    }

    fail(error) {
        for (const { reject } of this.waiting.splice(0))
            reject(error);
    }

    async ask(question) {
        const answer = this.next();
        this.process.stdin.write(JSON.stringify(question) + '\n');
        const { error, ...rest } = await answer;
        if (error)
            throw new Error(error);
        return rest;
    }

    async stop() {
        const ended = new Promise(resolve => this.process.once('exit', resolve));
        this.process.stdin.end();
        return ended;
    }

    /// The commands that have reached the sensor since the last call.
    async calls() { return (await this.ask({ do: 'calls' })).calls; }
    /// The lines that the tunnel has logged since the last call.
    async log() { return (await this.ask({ do: 'log' })).log; }
    /// A value that an application reads from the sensor without the tunnel, as text.
    async read(command, answer) { return (await this.ask({ do: 'read', command, answer })).value; }

    async forget() {
        await this.calls();
        await this.log();
    }
}

/// Those of \a calls that may have changed the sensor: the texts of generic commands, the names of other commands.
export function changes(calls) {
    return calls.filter(call => !call.command.startsWith('Get_'))
        .map(call => call.command === 'Cmd_Generic' ? call.parameters.SP_CmdStr : call.command);
}

/// The paths of the pages that were fetched by \a calls.
export function paths(calls) {
    return calls.filter(call => call.command === 'Get_HTTP').map(call => call.parameters.SP_HTTPPath);
}

/// Collects the elements that \a take returns until \a isEnough accepts them, and returns all of them.
export async function collect(take, isEnough, what) {
    const collected = [];
    for (const end = Date.now() + 10000; Date.now() < end; await sleep(20)) {
        collected.push(...await take());
        if (isEnough(collected))
            return collected;
    }
    throw new Error(`${what} did not arrive; got: ${JSON.stringify(collected).slice(0, 2000)}`);
}
