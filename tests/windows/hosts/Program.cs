// "hosts library FILE" runs a host of the library, "hosts runtime" a direct client of the Windows
// Runtime. Each prints a line for each step. The exit code is 1 if a step failed.
using Hosts;

try
{
    switch (args)
    {
        case ["library", var file]:
            LibraryHost.Run(file);
            break;
        case ["runtime"]:
            await RuntimeClient.Run();
            break;
        default:
            Console.Error.WriteLine("usage: hosts library FILE | hosts runtime");
            return 2;
    }
    Console.WriteLine($"done: {Exchange.Total} bytes to ORV-0042 and back, unchanged");
    return 0;
}
catch (Exception failure)
{
    Console.WriteLine(failure);
    return 1;
}
