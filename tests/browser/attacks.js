// SPDX-License-Identifier: MIT
// What a page can send to a tunnel at \a target without anybody's permission. All of it runs in the page.

/// The ways in which a page can post \a text without a preflight request.
export const posts = {
    'a form': (page, target, text) => submit(page, target, text, 'application/x-www-form-urlencoded'),
    'a form of plain text': (page, target, text) => submit(page, target, text, 'text/plain'),
    'a form in parts': (page, target, text) => submit(page, target, text, 'multipart/form-data'),
    'fetch': (page, target, text) => page.evaluate(
        ([url, body]) => fetch(url, { method: 'POST', mode: 'no-cors', body }).then(() => {}, () => {}),
        [target, text]),
    'fetch of form data': (page, target, text) => page.evaluate(
        ([url, body]) => fetch(url, { method: 'POST', mode: 'no-cors', body: new URLSearchParams(body) })
            .then(() => {}, () => {}), [target, text]),
    'fetch of parts': (page, target, text) => page.evaluate(([url, body]) => {
        const data = new FormData();
        data.append(...body.split('='));
        return fetch(url, { method: 'POST', mode: 'no-cors', body: data }).then(() => {}, () => {});
    }, [target, text]),
    'fetch that outlives the page': (page, target, text) => page.evaluate(
        ([url, body]) => fetch(url, { method: 'POST', mode: 'no-cors', keepalive: true, body }).then(() => {}, () => {}),
        [target, text]),
    'XMLHttpRequest': (page, target, text) => page.evaluate(([url, body]) => new Promise(resolve => {
        const request = new XMLHttpRequest();
        request.onloadend = () => resolve();
        request.open('POST', url);
        request.send(body);
    }), [target, text]),
    'a beacon': (page, target, text) => page.evaluate(
        ([url, body]) => { navigator.sendBeacon(url, body); }, [target, text]),
};

/// The ways in which a page can embed or read \a url.
export const inclusions = {
    'a script': (page, url) => include(page, 'script', { src: url }),
    'a module': (page, url) => include(page, 'script', { src: url, type: 'module' }),
    'an image': (page, url) => include(page, 'img', { src: url }),
    'a style sheet': (page, url) => include(page, 'link', { href: url, rel: 'stylesheet' }),
    'a frame': (page, url) => include(page, 'iframe', { src: url }),
    'an object': (page, url) => include(page, 'object', { data: url }),
    'a video': (page, url) => include(page, 'video', { src: url }),
    'fetch': (page, url) => page.evaluate(target => fetch(target).then(() => {}, () => {}), url),
    'fetch without reading': (page, url) => page.evaluate(
        target => fetch(target, { mode: 'no-cors' }).then(() => {}, () => {}), url),
    'events': (page, url) => page.evaluate(target => { window.events = new EventSource(target); }, url),
};

/// The ways in which a page can make the browser request \a url without an action of the user. The tunnel refuses
/// them to the sensor's own pages too, so another server is needed to show that the browser sends the request.
export const unasked = {
    'a WebSocket': (page, url) => page.evaluate(target => new Promise(resolve => {
        const socket = new WebSocket(target.replace('http:', 'ws:'));
        socket.onclose = resolve;
        socket.onerror = resolve;
    }), url),
    'a speculative prefetch': (page, url) => page.evaluate(target => {
        const rules = { prefetch: [{ source: 'list', urls: [target], eagerness: 'immediate' }] };
        document.head.append(Object.assign(document.createElement('script'),
            { type: 'speculationrules', textContent: JSON.stringify(rules) }));
    }, url),
    'a linked prefetch': (page, url) => page.evaluate(target => {
        document.head.append(Object.assign(document.createElement('link'), { rel: 'prefetch', href: target }));
    }, url),
};

/// A body of \a count blocks of the size in which browsers write. Each block is a complete request that would change a
/// setting of the sensor.
export function blocksOfRequests(count, host) {
    const size = 16 * 1024;
    const head = length => `POST / HTTP/1.1\r\nHost: ${host}\r\nContent-Length: ${length}\r\n\r\n`;
    const length = size - head(size).length;
    const body = 'MEASRATE 7\n';
    return (head(length) + body + '#'.repeat(length - body.length)).repeat(count);
}

/// Navigates \a page to the answer.
function submit(page, target, text, enctype) {
    return page.evaluate(([action, body, type]) => {
        const form = document.createElement('form');
        Object.assign(form, { method: 'POST', action, enctype: type });
        const field = document.createElement('input');
        [field.name, field.value] = body.split('=');
        form.append(field);
        document.body.append(form);
        form.submit();
    }, [target, text, enctype]);
}

function include(page, name, attributes) {
    return page.evaluate(([tag, values]) => {
        document.body.append(Object.assign(document.createElement(tag), values));
    }, [name, attributes]);
}
