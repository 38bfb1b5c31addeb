"use strict";
// Makes the search work for pages that are opened from disk. A file:// page cannot fetch the index or start a
// worker, so the index is a script, and the worker's script runs in a hidden frame.
if (location.protocol === "file:") {
    window.__search = { index: Promise.resolve(window.searchIndex) };
    window.Worker = class extends EventTarget {
        constructor(url) {
            super();
            const frame = document.createElement("iframe");
            frame.hidden = true;
            document.body.append(frame);
            this.ready = new Promise((resolve) => {
                const inner = frame.contentWindow;
                inner.postMessage = (data) => this.dispatchEvent(new MessageEvent("message", { data }));
                const script = inner.document.createElement("script");
                script.src = url;
                script.onload = () => resolve(inner);
                inner.document.body.append(script);
            });
        }

        postMessage(data) {
            this.ready.then((inner) => inner.dispatchEvent(new inner.MessageEvent("message", { data })));
        }

        terminate() {}
    };
}
