// SPDX-License-Identifier: MIT
'use strict';

const period = 1000; // milliseconds between two polls
const historyLength = 60; // values
const cards = [];

function setText(id, text) {
    document.getElementById(id).textContent = text;
}

function element(parent, name, className) {
    const made = document.createElement(name);
    made.className = className;
    parent.append(made);
    return made;
}

function makeCard(signal) {
    const root = element(document.getElementById('signals'), 'section', 'card');
    const card = { values: [] };
    element(root, 'h2', '').textContent = signal.name;
    card.value = element(root, 'div', 'value');
    card.bar = element(element(root, 'div', 'scale'), 'i', '');
    const ends = element(root, 'div', 'ends');
    for (const end of signal.range)
        element(ends, 'span', '').textContent = end + ' ' + signal.unit;
    const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
    svg.setAttribute('class', 'history');
    svg.setAttribute('viewBox', '0 0 ' + (historyLength - 1) + ' 100');
    svg.setAttribute('preserveAspectRatio', 'none');
    card.curve = document.createElementNS('http://www.w3.org/2000/svg', 'polyline');
    svg.append(card.curve);
    root.append(svg);
    return card;
}

function drawHistory(card) {
    const known = card.values.filter(value => value !== null);
    const minimum = Math.min(...known), width = Math.max(...known) - minimum || 1;
    const points = [];
    card.values.forEach((value, i) => {
        if (value !== null)
            points.push((historyLength - card.values.length + i) + ',' + (95 - 90 * (value - minimum) / width).toFixed(1));
    });
    card.curve.setAttribute('points', points.join(' '));
}

function showSignal(card, signal) {
    const [minimum, maximum] = signal.range;
    const failed = signal.value === null;
    card.value.textContent = failed ? signal.error : signal.value.toFixed(signal.decimals);
    card.value.classList.toggle('error', failed);
    if (!failed)
        element(card.value, 'small', '').textContent = signal.unit;
    card.bar.style.width = failed ? '0' : 100 * (signal.value - minimum) / (maximum - minimum) + '%';
    card.values.push(signal.value);
    card.values.splice(0, card.values.length - historyLength);
    drawHistory(card);
}

function show(sensor) {
    document.title = sensor.model + ' ' + sensor.serialNumber;
    setText('model', sensor.model);
    setText('name', sensor.name || '(none)');
    for (const key of ['serialNumber', 'articleNumber', 'firmware'])
        setText(key, sensor[key]);
    setText('rate', sensor.rate + ' Hz');
    setText('state', sensor.waitsForTrigger ? 'waiting for a trigger' : 'measuring');
    setText('line', sensor.baudrate + ' baud, measured values ' + (sensor.serialOutput ? 'on' : 'off'));
    if (cards.length !== sensor.signals.length) {
        document.getElementById('signals').replaceChildren();
        cards.splice(0, cards.length, ...sensor.signals.map(makeCard));
    }
    sensor.signals.forEach((signal, i) => showSignal(cards[i], signal));
    setText('status', 'Live values, ' + sensor.time.toFixed(1) + ' s after the start');
}

async function poll() {
    try {
        const response = await fetch('/values.json', { cache: 'no-store' });
        if (!response.ok)
            throw new Error(response.status + ' ' + response.statusText);
        show(await response.json());
    } catch (error) {
        setText('status', 'The sensor sends no values (' + error.message + ')');
    }
    setTimeout(poll, period);
}

poll();
