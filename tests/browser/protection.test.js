// SPDX-License-Identifier: MIT
// Attacks on the sensor by foreign pages. The sensor's own page makes each attempt as well and must succeed: otherwise
// the refusal would prove nothing.
import assert from 'node:assert/strict';
import { createServer } from 'node:http';
import { connect } from 'node:net';
import { after, before, beforeEach, test } from 'node:test';

import { blocksOfRequests, inclusions, posts, unasked } from './attacks.js';
import { launchBrowser } from './chromium.js';
import { Stand, changes, collect, paths } from './stand.js';

const foreignHost = 'evil.example';
const refusal = 'refused: 403 Forbidden';

let stand;
let browser;
let server; // serves the foreign pages
let seen = []; // the headers of other requests that it got

before(async () => {
    stand = await Stand.start();
    await stand.ask({ do: 'lineSpeed', on: false });
    server = createServer((request, response) => {
        if (request.url.startsWith('/unasked'))
            seen.push(request.headers);
        response.setHeader('Content-Type', 'text/html');
        if (request.url === '/refreshing')
            response.setHeader('Refresh', `0; url=${stand.url}/settings.html`);
        if (request.url === '/sandboxed')
            response.setHeader('Content-Security-Policy', 'sandbox allow-scripts allow-forms');
        response.end('<!DOCTYPE html><title>Foreign page</title><p>');
    });
    server.on('upgrade', (request, socket) => {
        seen.push(request.headers);
        socket.end('HTTP/1.1 403 Forbidden\r\nConnection: close\r\n\r\n');
    });
    await new Promise(resolve => server.listen(0, '127.0.0.1', resolve));
    browser = await launchBrowser([foreignHost]);
});
after(async () => {
    await browser.close();
    server.closeAllConnections();
    server.close();
    assert.equal(await stand.stop(), 0);
});
beforeEach(() => stand.forget());

const foreignPages = {
    'another host': () => `http://${foreignHost}:${server.address().port}/`,
    'another port of this computer': () => `http://127.0.0.1:${server.address().port}/`,
    'no origin at all': () => `http://${foreignHost}:${server.address().port}/sandboxed`,
};
/// A page of the sensor that sends no requests on its own.
const ownPage = () => stand.url + '/reference.html';

async function open(url) {
    const page = await browser.newPage();
    page.setDefaultTimeout(10000);
    await page.goto(url);
    return page;
}

/// Makes \a attempt from the page at \a url, waits for the refusal and returns what has reached the sensor.
async function refusedFrom(url, attempt) {
    const page = await open(url);
    await stand.forget();
    await attempt(page);
    await collect(() => stand.log(), lines => lines.includes(refusal), 'the refusal');
    await page.close();
    const calls = await stand.calls();
    return [...changes(calls), ...paths(calls)];
}

/// Makes \a attempt from a page of the sensor, waits until \a hasCome accepts the calls and returns them.
async function servedFromOwnPage(attempt, hasCome, what) {
    const page = await open(ownPage());
    await stand.forget();
    await attempt(page);
    const calls = await collect(() => stand.calls(), hasCome, what);
    await page.close();
    assert.ok(!(await stand.log()).includes(refusal));
    return calls;
}

for (const [name, post] of Object.entries(posts)) {
    const text = 'MEASRATE=7';
    const attempt = page => post(page, stand.url + '/', text);
    const isPosted = calls => changes(calls).some(change => /MEASRATE[="\s][^]*7/.test(change));

    test(`only the sensor's page can post by ${name}`, async t => {
        await servedFromOwnPage(attempt, isPosted, 'the command');
        for (const [where, url] of Object.entries(foreignPages))
            await t.test(`not one of ${where}`, async () =>
                assert.deepEqual(await refusedFrom(url(), attempt), []));
    });
}

for (const [name, include] of Object.entries(inclusions)) {
    const attempt = page => include(page, stand.url + '/sensor.svg?included');

    test(`only the sensor's page can include ${name}`, async t => {
        await servedFromOwnPage(attempt, calls => paths(calls).includes('/sensor.svg'), 'the request');
        for (const [where, url] of Object.entries(foreignPages))
            await t.test(`not one of ${where}`, async () =>
                assert.deepEqual(await refusedFrom(url(), attempt), []));
    });
}

const marks = {
    'a WebSocket': headers => headers.upgrade === 'websocket' && headers.origin !== undefined,
    'a speculative prefetch': headers => /prefetch/.test(headers['sec-purpose']),
    'a linked prefetch': headers => /prefetch/.test(headers['sec-purpose']),
};
for (const [name, ask] of Object.entries(unasked)) {
    test(`requests without an action of the user are refused: ${name}`, async t => {
        await t.test('the browser sends them to another server', async () => {
            const page = await open(foreignPages['another host']());
            seen = [];
            await ask(page, `http://127.0.0.1:${server.address().port}/unasked`);
            await collect(async () => seen.splice(0), list => list.some(marks[name]), 'the request');
            await page.close();
        });
        for (const [where, url] of Object.entries(foreignPages))
            await t.test(`not one of ${where}`, async () =>
                assert.deepEqual(await refusedFrom(url(), page => ask(page, stand.url + '/sensor.svg?unasked')), []));
    });
}

/// Sends \a bytes on a new connection and returns the answer.
function send(bytes) {
    return new Promise((resolve, reject) => {
        const socket = connect(new URL(stand.url).port, '127.0.0.1', () => socket.write(bytes));
        let answer = '';
        socket.setEncoding('latin1').on('data', data => { answer += data; });
        socket.on('error', reject).on('close', () => resolve(answer));
        socket.setTimeout(1000, () => socket.end());
    });
}

test('requests in the blocks of a foreign body are never taken for requests', async t => {
    const count = 55;
    const host = new URL(stand.url).host;
    const small = blocksOfRequests(count, host);
    const large = blocksOfRequests(300, host);
    const attempt = body => page => page.evaluate(([url, text]) => fetch(url, { method: 'POST', mode: 'no-cors', body: text })
        .then(() => {}, () => {}), [stand.url + '/', body]);

    await t.test('alone they are requests', async () => {
        await send(blocksOfRequests(3, host));
        assert.equal(changes(await stand.calls()).filter(text => text.startsWith('MEASRATE 7')).length, 3);
    });
    await t.test("from the sensor's page they are one command", async () => {
        const calls = await servedFromOwnPage(attempt(small), list => changes(list).length > 0, 'the command');
        assert.equal(changes(calls).length, 1);
        assert.match(changes(calls)[0], /^POST \/ HTTP/);
    });
    await t.test("from the sensor's page they are refused if they are too long", async () => {
        const page = await open(ownPage());
        await stand.forget();
        await attempt(large)(page);
        await collect(() => stand.log(), lines => lines.some(line => line.startsWith('refused: 413')), 'the refusal');
        await page.close();
        assert.deepEqual(changes(await stand.calls()), []);
    });
    for (const [where, url] of Object.entries(foreignPages))
        for (const body of [small, large])
            await t.test(`${body.length} bytes from ${where} are refused`, async () =>
                assert.deepEqual(await refusedFrom(url(), attempt(body)), []));
});

test('a foreign page can link to the sensor, which shows its page', async () => {
    const page = await open(foreignPages['another host']());
    await stand.forget();
    await page.evaluate(url => {
        const link = Object.assign(document.createElement('a'), { href: url, textContent: 'sensor' });
        document.body.append(link);
        link.click();
    }, stand.url + '/settings.html');
    await page.waitForFunction(() => document.title === 'Sensor settings');
    await page.waitForFunction(() => document.getElementById('BAUDRATE').value !== '');
    const calls = await stand.calls();
    assert.ok(paths(calls).includes('/settings.html'));
    assert.deepEqual(changes(calls), []);
    await page.close();
});

test('a foreign page can send the browser to the sensor, which shows its page', async () => {
    const page = await browser.newPage();
    await stand.forget();
    await page.goto(`http://${foreignHost}:${server.address().port}/refreshing`);
    await page.waitForFunction(() => document.title === 'Sensor settings');
    await page.waitForFunction(() => document.getElementById('BAUDRATE').value !== '');
    const calls = await stand.calls();
    assert.ok(paths(calls).includes('/settings.html'));
    assert.deepEqual(changes(calls), []);
    await page.close();
});

test("requests of other methods of the sensor's page are answered and not relayed", async () => {
    const page = await open(ownPage());
    await stand.forget();
    for (const method of ['HEAD', 'PUT', 'DELETE', 'OPTIONS'])
        assert.equal(await page.evaluate(name => fetch('/values.json', { method: name })
            .then(answer => answer.status), method), 501);
    const calls = await stand.calls();
    assert.deepEqual(changes(calls), []);
    assert.ok(!paths(calls).includes('/values.json'));
    await page.close();
});

test('a form that a foreign page submits to the sensor shows a refusal', async () => {
    const page = await open(foreignPages['another host']());
    await stand.forget();
    await posts['a form'](page, stand.url + '/', 'MEASRATE=7');
    await page.waitForFunction(() => document.title === '403 Forbidden');
    assert.deepEqual(changes(await stand.calls()), []);
    await page.close();
});

test('the tunnel answers under the names of this computer alone', async t => {
    const { port } = new URL(stand.url);
    const post = page => page.evaluate(() => fetch('/', { method: 'POST', body: 'MEASRATE 7' }).then(answer => answer.status));

    await t.test('under localhost', async () => {
        const page = await open(`http://localhost:${port}/reference.html`);
        assert.equal(await page.title(), 'Command reference');
        await stand.forget();
        assert.equal(await post(page), 200);
        assert.deepEqual(changes(await stand.calls()), ['MEASRATE 7']);
        await page.close();
    });
    await t.test('not under a foreign name that leads here', async () => {
        const page = await browser.newPage();
        const answer = await page.goto(`http://${foreignHost}:${port}/reference.html`);
        assert.equal(answer.status(), 403);
        assert.equal(await post(page), 403);
        assert.equal(await page.evaluate(() => fetch('/values.json').then(other => other.status)), 403);
        const calls = await stand.calls();
        assert.deepEqual([...changes(calls), ...paths(calls)], []);
        await page.close();
    });
});
