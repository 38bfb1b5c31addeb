"use strict";
// Tests the behaviours that all bindings share, from $ORV_BEHAVIOURS, and Node's features.
const assert = require("node:assert/strict");
const { once } = require("node:events");
const fs = require("node:fs");
const test = require("node:test");
const koffi = require("koffi");
const { Library, Scanner, connect, scan } = require("..");
const { constants, structures } = require("../native.js");

const load = (variable) => JSON.parse(fs.readFileSync(process.env[variable], "utf8"));
const world = new Library({ flavour: "simulated" });
const echo = { title: "echo", devices: [
    { address: "A0:B1:C2:D3:E4:F5", name: "ORV-0042", interval: 100, echo: 15 }] };

class Run {
    named = new Map();

    async steps(steps) {
        for (const step of steps) {
            const start = world.now();
            if ("error" in step) await this.fails(step);
            else assert.deepEqual(await this.result(step), step.gives, JSON.stringify(step));
            if ("takes" in step) assert.ok(Math.abs(world.now() - start - step.takes) < 11, JSON.stringify(step));
        }
    }

    async fails(step) {
        const error = await this.result(step).then(() => assert.fail(JSON.stringify(step)), (error) => error);
        const argument = error instanceof TypeError || error instanceof RangeError;
        assert.equal(error.kind ?? (argument ? "argument" : error), step.error, JSON.stringify(step));
        assert.ok(error.message.includes(step.log ?? ""));
    }

    async result(step) {
        const subject = this.named.get(step.of ?? step.to);
        switch (step.do) {
            case "available": return world.available();
            case "scan": return this.scan(step);
            case "scanner": this.named.set(step.as, new Scanner(world)); return this.named.get(step.as).start();
            case "connect": {
                const stream = await connect(step.to, world);
                this.named.set(step.as, stream);
                return undefined;
            }
            case "read": return (await subject.read(step.count, step.wait)).toString("hex");
            case "write": return subject.write(Buffer.from(step.data, "hex"));
            case "pass": await world.call("OrvWorld_PassTime", step.ms); return undefined;
            case "log": await (step.on ? world.enableLog() : world.disableLog()); return undefined;
            case "together":
                await Promise.all(step.threads.map(async (steps) => {
                    for (let time = 0; time < step.times; ++time) await this.steps(steps);
                }));
                return undefined;
            default: return subject[step.do](); // calls close, flush or devices
        }
    }

    async scan(step) {
        const found = await scan(step.ms, world);
        assert.equal(found.length, step.gives.length);
        found.sort((one, other) => (one.address < other.address ? -1 : 1));
        return found.map((device, index) => {
            const all = { ...device, data1118: device.data1118.toString("hex") };
            return Object.fromEntries(Object.keys(step.gives[index]).map((key) => [key, all[key]]));
        });
    }
}

for (const behaviour of load("ORV_BEHAVIOURS")) {
    test(behaviour.name, async () => {
        await world.play(behaviour.world);
        await new Run().steps(behaviour.steps);
    });
}

test("the layout is that of the header", () => {
    for (const header of load("ORV_LAYOUT")) {
        for (const [name, value] of Object.entries(header.constants)) assert.equal(constants[name], value);
        for (const wanted of header.structures) {
            assert.equal(koffi.sizeof(structures[wanted.name]), wanted.size);
            for (const field of wanted.fields) {
                assert.equal(koffi.offsetof(structures[wanted.name], field.name), field.offset, field.name);
            }
        }
    }
    assert.equal(world.OrvWorld_Version(), require("../package.json").version);
});

test("events", async () => {
    await world.play(echo);
    const scanner = new Scanner(world);
    const heard = once(scanner, "device");
    await scanner.start();
    assert.equal((await heard)[0].name, "ORV-0042");
    await scanner.close();

    const stream = await connect("A0:B1:C2:D3:E4:F5", world);
    const received = once(stream, "data");
    await stream.write("hello");
    assert.equal((await received)[0].toString(), "hello");
    const closed = once(stream, "close");
    await stream.close();
    await closed;
    await assert.rejects(world.play({}), TypeError);
});
