// Compiled but not run: checks that index.d.ts fits a TypeScript program.
import { Device, Library, OrvError, Scanner, connect, scan } from "..";

export async function host(): Promise<string[]> {
    const library = new Library({ flavour: "simulated" });
    const found: Device[] = await scan(1000, library);
    new Scanner(library).on("device", (device) => console.log(device.name, device.rssi));
    const stream = await connect(found[0].address, library);
    stream.on("data", (data) => console.log(data.toString("hex")));
    try {
        await stream.write(new Uint8Array([1, 2, 3]));
    } catch (error) {
        return error instanceof OrvError ? [error.kind, error.log] : [];
    } finally {
        await stream.close();
    }
    return [(await stream.read(16, 100)).toString()];
}
