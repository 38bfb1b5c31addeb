// Shows key figures, notes, failures and devices. Text from the log is never inserted as HTML.

function element(name, text, className) {
    const made = document.createElement(name);
    if (text !== undefined) made.textContent = text;
    if (className) made.className = className;
    return made;
}

const number = (value) => value.toLocaleString("en");

function hideSection(id) {
    document.getElementById(id).hidden = true;
}

function fillFacts() {
    document.getElementById("file").textContent = data.file;
    document.title = "Log report: " + data.file.split(/[\\/]/).pop();
    const calls = data.lanes.slice(0, 3).reduce((sum, lane) => sum + lane.count, 0);
    const failed = data.failures.reduce((sum, failure) => sum + (failure.known ? failure.count : 0), 0);
    const facts = [
        [number(data.lines), "lines"],
        [timeOfDay(0, false), "begins"],
        [lengthOfTime(data.span), "long"],
        [number(calls), "calls"],
        [number(failed), data.hasResults ? "failed" : "failed for certain"],
        [number(data.lanes[3].count), "advertisements"],
        [number(data.devices.length + data.moreDevices), "devices"],
    ];
    for (const [value, name] of facts) {
        const item = element("li", undefined, name.startsWith("failed") && failed > 0 ? "bad" : "");
        item.append(element("b", value), name);
        document.getElementById("facts").append(item);
    }
}

function timeLink(time, words) {
    const link = element("button", words, "link");
    link.addEventListener("click", () => {
        const around = Math.min(Math.max(data.span / 50, 3000), data.span);
        showTime(time - around / 2, time + around / 2);
        document.getElementById("lanes").scrollIntoView({ block: "center", behavior: "smooth" });
    });
    return link;
}

const sentence = (text) => (text ? text.charAt(0).toUpperCase() + text.slice(1) + "." : "");

function noteCard(note) {
    const card = element("li", undefined, "card");
    for (const item of note.items) {
        const title = element("h3", sentence(item.what));
        if (item.time) title.append(timeLink(item.time[0], item.time[1]));
        card.append(title);
    }
    if (note.more > 0) card.append(element("p", "and " + number(note.more) + " more of the kind"));
    card.append(element("p", sentence(note.means) + " " + sentence(note.do)));
    return card;
}

function fillNotes() {
    const notes = data.notes.slice();
    if (!data.hasResults) {
        const means = data.oneThread
            ? "durations assume that the host calls from one thread"
            : "durations are mostly unknown";
        const what = "the host writes no result lines";
        notes.unshift({ items: [{ what }], more: 0, means: "most results are unknown, and " + means, do: "" });
    }
    if (notes.length === 0) hideSection("notes-section");
    for (const note of notes) document.getElementById("notes").append(noteCard(note));
}

function addMore(id, count, noun) {
    if (count > 0) document.getElementById(id).after(element("p", "and " + number(count) + " more " + noun, "hint"));
}

function causeItem(cause) {
    const item = element("li", sentence(cause.what + (cause.while ? ", " + cause.while : "")));
    item.append(element("span", "Sign: " + sentence(cause.sign) + " To do: " + sentence(cause.do), "advice"));
    return item;
}

function failureCard(failure) {
    const card = element("div", undefined, "card failure");
    const title = element("h3", failure.call);
    if (failure.count > 1) title.append(element("span", number(failure.count) + " times"));
    if (failure.duration) title.append(element("span", (failure.count > 1 ? "first: " : "") + failure.duration));
    if (failure.line) title.append(element("span", "Exception: " + failure.line));
    const times = element("p");
    for (const [time, words] of failure.times) times.append(timeLink(time, words), " ");
    const causes = element("ul");
    for (const cause of failure.causes) causes.append(causeItem(cause));
    const intro = failure.known ? (failure.causes.length > 1 ? "Possible causes, the likeliest first:" : "") : "If it failed: possible causes, the likeliest first:";
    card.append(title, times, element("p", intro), causes);
    return card;
}

function fillFailures() {
    if (data.failures.length === 0) hideSection("failures-section");
    for (const failure of data.failures) document.getElementById("failures").append(failureCard(failure));
    addMore("failures", data.moreFailures, "kinds of failures");
}

function fillDevices() {
    if (data.devices.length === 0) hideSection("devices-section");
    const columns = [
        ["Address", (device) => device.address],
        ["Name", (device) => device.name],
        ["Heard", (device) => number(device.advertisements)],
        ["dBm", (device) => (device.weakest === undefined ? "" : device.weakest + " to " + device.strongest)],
        ["Connects", (device) => number(device.connects)],
        ["Failed calls", (device) => number(device.failed)],
        ["Received", (device) => number(device.received) + " B"],
        ["Sent", (device) => number(device.sent) + " B"],
        ["First", (device) => timeOfDay(device.first, false)],
        ["Last", (device) => timeOfDay(device.last, false)],
    ];
    const head = element("tr");
    for (const [title] of columns) head.append(element("th", title, title === "Name" ? "text" : ""));
    const body = element("tbody");
    for (const device of data.devices) {
        const row = element("tr");
        for (const [title, value] of columns) {
            const cell = element("td", value(device), title === "Name" ? "text" : "");
            cell.title = title === "Name" ? device.name : "";
            row.append(cell);
        }
        body.append(row);
    }
    const top = element("thead");
    top.append(head);
    document.getElementById("devices").append(top, body);
    addMore("devices", data.moreDevices, "devices");
}
