// Reads type names, one per line, from the standard input, and writes what the metadata files in
// the directory args[0] say about each type, such as its vtable slots.
using PlatformMetadata;

using var output = new StreamWriter(Console.OpenStandardOutput());
var facts = new Facts(new Library(args[0]), output);
while (Console.ReadLine() is { } name)
{
    facts.Write(name);
}
