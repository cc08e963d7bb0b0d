// SPDX-License-Identifier: MIT
// Tests of the sensor's pages as a user sees them.
import assert from 'node:assert/strict';
import { readFile } from 'node:fs/promises';
import { after, before, beforeEach, test } from 'node:test';

import { launchBrowser } from './chromium.js';
import { Stand, changes, paths } from './stand.js';

let stand;
let browser;

before(async () => {
    stand = await Stand.start();
    browser = await launchBrowser();
});
after(async () => {
    await browser.close();
    assert.equal(await stand.stop(), 0);
});
beforeEach(() => stand.forget());

async function open(path, context = browser) {
    const page = await context.newPage();
    page.setDefaultTimeout(10000);
    await page.goto(stand.url + path);
    return page;
}

async function openSettings(context = browser) {
    const page = await open('/settings.html', context);
    await page.waitForFunction(() => document.getElementById('BAUDRATE').value !== '');
    return page;
}

/// Clicks an element that changes settings, and waits until the page has read the settings again.
async function clickAndReload(page, selector) {
    const first = await page.evaluateHandle(() => document.getElementById('BAUDRATE').firstChild);
    await page.click(selector);
    await page.waitForFunction(
        old => !old.isConnected && !document.querySelector('button:disabled'), first);
}

const setButton = name => `form[data-name=${name}] button`;
const answerOn = page => page.locator('#answer').textContent();

/// Waits until the overview shows the sensor, and then until its value changes.
async function showsValues(page) {
    await page.waitForFunction(() => document.title.endsWith(' 1018001'));
    const value = page.locator('#signals .value').first();
    await page.waitForFunction(
        old => document.querySelector('#signals .value').textContent !== old, await value.textContent());
}

const isStyled = page => page.locator('header').evaluate(
    header => getComputedStyle(header).backgroundColor !== getComputedStyle(document.createElement('p')).backgroundColor);

test('the overview shows values that change', async () => {
    const page = await open('/');
    await showsValues(page);
    assert.equal(await page.locator('#serialNumber').textContent(), '1018001');
    assert.ok(await page.locator('img').evaluate(image => image.naturalWidth > 0));
    assert.ok(await isStyled(page));
    const calls = await stand.calls();
    assert.ok(paths(calls).filter(path => path === '/values.json').length >= 2);
    assert.deepEqual(changes(calls), []);
    await page.close();
});

test('a reload fetches nothing again that has not changed', async () => {
    const fixed = ['/', '/overview.js', '/sensor.svg', '/style.css'];
    const context = await browser.newContext();
    const page = await open('/', context);
    await page.waitForFunction(() => document.title !== 'Sensor overview');
    const first = await stand.log();
    for (const path of fixed)
        assert.ok(first.some(line => line.startsWith(`GET ${path} 200, `)), `${path}: ${first}`);
    await stand.forget();
    await page.reload();
    await page.waitForFunction(() => document.title !== 'Sensor overview');
    const again = await stand.log();
    for (const path of fixed)
        assert.ok(again.some(line => line.startsWith(`GET ${path} 304, 0 bytes`)), `${path}: ${again}`);
    const calls = (await stand.calls()).filter(call => fixed.includes(call.parameters.SP_HTTPPath));
    assert.ok(calls.length >= fixed.length);
    for (const call of calls)
        assert.match(call.parameters.SP_HTTPeTag, /^[^"]+$/);
    assert.ok(await isStyled(page));
    await context.close();
});

test('what is set on the settings page is set in the sensor', async () => {
    const page = await openSettings();
    await page.fill('#MEASRATE', '4');
    await clickAndReload(page, setButton('MEASRATE'));
    assert.match(await answerOn(page), /^MEASRATE 4/);
    assert.equal(Number(await stand.read('Get_Samplerate', 'SA_Measrate')), 4);
    await page.selectOption('#AVERAGINGTYPE', '3');
    await clickAndReload(page, setButton('AVERAGINGTYPE'));
    assert.equal(await stand.read('Get_Averaging', 'SA_AveragingType'), '3');
    await page.fill('#SENSORNAME', 'Press <3> & "left"');
    await clickAndReload(page, setButton('SENSORNAME'));
    assert.equal(await page.inputValue('#SENSORNAME'), 'Press <3> & "left"');
    assert.equal(await stand.read('Get_SensorName', 'SA_SensorName'), 'Press <3> & "left"');
    assert.deepEqual(changes(await stand.calls()),
        ['MEASRATE 4', 'AVERAGINGTYPE 3', 'SENSORNAME Press <3> & "left"']);
    await page.close();
});

test('a field that is being edited keeps its text when another one is set', async () => {
    const page = await openSettings();
    await page.fill('#SENSORNAME', 'half a na');
    await page.fill('#MEASRATE', '2');
    await clickAndReload(page, setButton('MEASRATE'));
    assert.equal(await page.inputValue('#SENSORNAME'), 'half a na');
    await clickAndReload(page, '#defaults');
    assert.notEqual(await page.inputValue('#SENSORNAME'), 'half a na');
    await stand.calls();
    await page.close();
});

test('settings are exported, imported and set back', async () => {
    const page = await openSettings();
    await page.click('#export');
    await page.waitForFunction(() => document.getElementById('settings').value.includes('MEASRATE '));
    const changed = (await page.inputValue('#settings')).replace(/^MEASRATE .*$/m, 'MEASRATE 5');
    await page.fill('#settings', changed);
    await clickAndReload(page, '#import');
    assert.equal(Number(await page.inputValue('#MEASRATE')), 5);
    assert.equal(Number(await stand.read('Get_Samplerate', 'SA_Measrate')), 5);
    await clickAndReload(page, '#defaults');
    assert.equal(Number(await stand.read('Get_Samplerate', 'SA_Measrate')), 2);
    // The default settings send measured values over the line that the tunnel needs.
    assert.deepEqual(changes(await stand.calls()).map(text => text.trim()),
        ['EXPORT', changed.trim(), 'SETDEFAULT', 'Set_DataOutInterface']);
    await page.close();
});

test('the sensor goes on serving at a baud rate that is set on its page', async () => {
    const page = await openSettings();
    for (const rate of ['460800', '115200']) {
        await page.selectOption('#BAUDRATE', rate);
        await clickAndReload(page, setButton('BAUDRATE'));
        assert.equal(await answerOn(page), `BAUDRATE ${rate}`);
        assert.equal(await page.inputValue('#BAUDRATE'), rate);
    }
    await page.close();
});

test('a page longer than an answer of the sensor arrives whole', async () => {
    const original = await readFile(new URL('../../simulator/web/reference.html', import.meta.url));
    assert.ok(original.length > 16383);
    const page = await open('/reference.html');
    const received = await page.evaluate(async () => [...new Uint8Array(
        await (await fetch('/reference.html', { cache: 'no-store' })).arrayBuffer())]);
    assert.ok(original.equals(Buffer.from(received)));
    assert.equal(await page.title(), 'Command reference');
    await page.close();
});

test('several pages at once all show their values', async () => {
    const context = await browser.newContext();
    const overviews = await Promise.all(['/', '/', '/', '/'].map(path => open(path, context)));
    await openSettings(context);
    await Promise.all(overviews.map(showsValues));
    await context.close();
});

test('a browser that ends in the middle of a transfer does not hold up the others', async () => {
    const size = 64 * 1024 * 1024;
    await stand.ask({ do: 'lineSpeed', on: false });
    await stand.ask({ do: 'page', path: '/large.txt', size });
    const other = await launchBrowser();
    const page = await open('/', other);
    // The rest waits in the tunnel: the buffers of a browser are much smaller than the page.
    const begun = await page.evaluate(async () => {
        window.reader = (await fetch('/large.txt')).body.getReader();
        return (await window.reader.read()).value.length;
    });
    assert.ok(begun > 0 && begun < size);
    await other.close();
    const next = await open('/');
    await showsValues(next);
    const whole = await next.evaluate(async () => (await (await fetch('/large.txt')).text()).length);
    assert.equal(whole, size);
    await stand.ask({ do: 'lineSpeed', on: true });
    await next.close();
});

test('an error text of the sensor is shown as text', async () => {
    await stand.ask({ do: 'fail', text: '<script>document.title="run"</script> & <b id="bold">gone</b>' });
    const page = await browser.newPage();
    const response = await page.goto(stand.url + '/<i id="path">');
    assert.equal(response.status(), 502);
    assert.equal(await page.title(), '502 Bad Gateway');
    assert.match(await page.locator('body').textContent(),
        /<script>document\.title="run"<\/script> & <b id="bold">gone<\/b>/);
    assert.equal(await page.locator('#bold, #path, script').count(), 0);
    await stand.ask({ do: 'mend' });
    await page.close();
});

test('pages are served again when an unplugged sensor is back', async () => {
    const page = await open('/');
    await showsValues(page);
    await stand.ask({ do: 'unplug' });
    await page.waitForFunction(() => document.getElementById('status').textContent.includes('502 Bad Gateway'));
    const lost = await browser.newPage();
    assert.equal((await lost.goto(stand.url + '/settings.html')).status(), 502);
    assert.match(await lost.locator('p').textContent(), /\/settings\.html could not be fetched from the sensor: ./);
    await stand.ask({ do: 'plug' });
    await page.waitForFunction(() => !document.getElementById('status').textContent.includes('502 Bad Gateway'));
    await showsValues(page);
    assert.equal((await lost.reload()).status(), 200);
    assert.equal(await lost.title(), 'Sensor settings');
    await lost.close();
    await page.close();
});
