const data = JSON.parse(document.getElementById("data").textContent);

function makeCharts() {
    const place = (id) => document.getElementById(id);
    charts.push(makeLanes(place("lanes")));
    if (data.signals.length > 0) charts.push(makeSignal(place("signal")));
    else hideSection("signal-section");
    if (data.received.some(Boolean) || data.sent.some(Boolean)) charts.push(makeRate(place("rate")));
    else hideSection("rate-section");
}

function bindButtons() {
    const bind = (id, change) =>
        document.getElementById(id).addEventListener("click", () => {
            const { min, max } = charts[0].scales.x;
            showTime(...change(min, max, max - min));
        });
    bind("all", () => [0, data.span]);
    bind("in", (min, max, length) => [min + length / 4, max - length / 4]);
    bind("out", (min, max, length) => [min - length / 2, max + length / 2]);
    bind("back", (min, max, length) => [min - length / 2, max - length / 2]);
    bind("forth", (min, max, length) => [min + length / 2, max + length / 2]);
}

function fitCharts() {
    for (const chart of charts) {
        chart.setSize({ width: chart.root.parentElement.clientWidth - 8, height: chart.height });
    }
}

fillFacts();
fillNotes();
makeCharts();
fillMerged();
bindButtons();
fillFailures();
fillDevices();
window.addEventListener("resize", fitCharts);
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => charts.forEach((chart) => chart.redraw()));
