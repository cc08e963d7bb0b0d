// SPDX-License-Identifier: MIT
'use strict';

const answer = document.getElementById('answer');
const settings = document.getElementById('settings');
const forms = document.querySelectorAll('form');
const edited = new Set(); // the fields whose values have not been sent yet

function showAnswer(text, failed) {
    answer.textContent = text;
    answer.classList.toggle('error', failed);
}

function setBusy(busy) {
    for (const button of document.querySelectorAll('button'))
        button.disabled = busy;
}

// Sends a command; its answer is shown and returned, null when the sensor refuses.
async function send(command) {
    setBusy(true);
    try {
        const response = await fetch('/', {
            method: 'POST', headers: { 'Content-Type': 'text/plain' }, body: command
        });
        let text = await response.text();
        if (!response.ok && /^\s*</.test(text)) {
            const page = new DOMParser().parseFromString(text, 'text/html');
            text = Array.from(page.body.children, part => part.textContent.trim()).join('\n');
        }
        showAnswer(text || 'Done.', !response.ok);
        return response.ok ? text : null;
    } catch (error) {
        showAnswer('The sensor does not answer (' + error.message + ')', true);
        return null;
    } finally {
        setBusy(false);
    }
}

function fill(field, setting) {
    if ('minimum' in setting && field.type === 'number') {
        field.min = setting.minimum;
        field.max = setting.maximum;
    }
    if (!edited.has(field.id))
        field.value = setting.value;
}

async function load() {
    const response = await fetch('/settings.json', { cache: 'no-store' });
    if (!response.ok)
        throw new Error(response.status + ' ' + response.statusText);
    const sensor = await response.json();
    const byName = new Map(sensor.settings.map(setting => [setting.name, setting]));
    byName.set('BAUDRATE', { value: sensor.baudrate });
    document.getElementById('model').textContent = sensor.model;
    const rates = document.getElementById('BAUDRATE');
    const chosen = rates.value;
    rates.replaceChildren(...sensor.baudrates.map(rate => new Option(rate, rate)));
    rates.value = chosen;
    for (const form of forms) {
        const setting = byName.get(form.dataset.name);
        form.hidden = !setting;
        if (setting)
            fill(document.getElementById(form.dataset.name), setting);
    }
}

async function reload() {
    try {
        await load();
    } catch (error) {
        showAnswer(answer.textContent + '\nThe settings cannot be read (' + error.message + ')', true);
    }
}

for (const form of forms) {
    const name = form.dataset.name;
    form.addEventListener('input', () => edited.add(name));
    form.addEventListener('submit', async event => {
        event.preventDefault();
        const value = document.getElementById(name).value.trim();
        if (await send(name + (value ? ' ' + value : '=')) !== null) {
            edited.delete(name);
            await reload();
        }
    });
}

document.getElementById('export').addEventListener('click', async () => {
    const text = await send('EXPORT');
    if (text !== null) {
        settings.value = text;
        showAnswer(text.trim().split('\n').length + ' settings exported', false);
    }
});

document.getElementById('import').addEventListener('click', async () => {
    if (await send('IMPORT settings\n' + settings.value) !== null) {
        edited.clear();
        await reload();
    }
});

document.getElementById('defaults').addEventListener('click', async () => {
    if (await send('SETDEFAULT') !== null) {
        edited.clear();
        await reload();
    }
});

reload();
