using System.Collections.Immutable;
using System.Reflection.Metadata;
using System.Reflection.PortableExecutable;
using System.Security.Cryptography;
using System.Text;

namespace PlatformMetadata;

/// <summary>A type and the file that defines it.</summary>
internal readonly record struct Definition(MetadataReader Reader, TypeDefinitionHandle Handle)
{
    public TypeDefinition Type => Reader.GetTypeDefinition(Handle);

    public string Namespace => Reader.GetString(Type.Namespace);

    public string FullName => $"{Namespace}.{Reader.GetString(Type.Name)}";

    /// <summary>The name in C++, without the number of type parameters.</summary>
    public string Name => Reader.GetString(Type.Name).Split('`')[0];

    public Guid? Identifier => Attributes.Identifier(Reader, Type.GetCustomAttributes());

    public string Base => Type.BaseType.Kind == HandleKind.TypeReference
        ? Reader.GetString(Reader.GetTypeReference((TypeReferenceHandle)Type.BaseType).Name)
        : "";
}

/// <summary>All types in a directory of metadata files.</summary>
internal sealed class Library
{
    // Looks names up only in these namespaces, because other namespaces repeat some of them.
    private static readonly string[] Namespaces =
        ["Windows.Foundation", "Windows.Storage.Streams", "Windows.Devices.Bluetooth", "Windows.Devices.Radios",
         "Windows.Devices.Enumeration"];

    private readonly Dictionary<string, Definition> byFullName = [];
    private readonly ILookup<string, Definition> byName;

    // Keeps the files open, because the definitions refer to their memory.
    private readonly List<PEReader> files = [];

    public Library(string folder)
    {
        foreach (var path in Directory.GetFiles(folder, "*.winmd"))
        {
            files.Add(new PEReader(File.OpenRead(path)));
            // By default, the reader replaces some types with their .NET counterparts.
            var reader = files[^1].GetMetadataReader(MetadataReaderOptions.None);
            foreach (var handle in reader.TypeDefinitions)
            {
                var definition = new Definition(reader, handle);
                byFullName[definition.FullName] = definition;
            }
        }
        byName = byFullName.Values
            .Where(type => Namespaces.Any(name => type.Namespace == name || type.Namespace.StartsWith(name + ".")))
            .ToLookup(type => type.Name);
        Provider = new TypeProvider(this);
    }

    public TypeProvider Provider { get; }

    public Definition ByFullName(string name) =>
        byFullName.TryGetValue(name, out var found) ? found : throw new InvalidDataException($"no type {name}");

    /// <summary>Returns the type with this name, or null.</summary>
    public Definition? ByName(string name) => byName[name].ToArray() switch
    {
        [] => null,
        [var only] => only,
        var several => throw new InvalidDataException(
            $"{name} is {string.Join(" and ", several.Select(type => type.FullName))}"),
    };

    /// <summary>Returns the type's three spellings; for a generic type, the start of its instances' spellings.</summary>
    public WindowsType Describe(Definition type)
    {
        var name = type.Name;
        switch (type.Base)
        {
            case "Enum":
                return WindowsType.Value(name, $"enum({type.FullName};{UnderlyingType(type).Signature})");
            case "ValueType":
                var fields = FieldTypes(type).Select(field => field.Signature);
                return WindowsType.Value(name, $"struct({type.FullName};{string.Join(";", fields)})");
            case "MulticastDelegate" when type.Type.GetGenericParameters().Count == 0:
                return WindowsType.Interface(name, $"delegate({{{type.Identifier}}})");
            case "MulticastDelegate" or "":
                return WindowsType.Interface(name, $"{{{type.Identifier}}}");
            default:
                // A class with only static members has no default interface.
                return DefaultInterface(type) is { } standard
                    ? new WindowsType(name, standard.Abi, $"rc({type.FullName};{standard.Signature})")
                    : WindowsType.Value(name, "");
        }
    }

    public static WindowsType Instantiate(WindowsType generic, ImmutableArray<WindowsType> arguments) =>
        WindowsType.Interface(
            $"{generic.Name}<{string.Join(",", arguments.Select(argument => argument.Name))}>",
            $"pinterface({generic.Signature};{string.Join(";", arguments.Select(argument => argument.Signature))})");

    public WindowsType? DefaultInterface(Definition type)
    {
        foreach (var handle in type.Type.GetInterfaceImplementations())
        {
            var implementation = type.Reader.GetInterfaceImplementation(handle);
            if (Attributes.Of(type.Reader, implementation.GetCustomAttributes(), "DefaultAttribute").Any())
            {
                return Resolve(type.Reader, implementation.Interface);
            }
        }
        return null;
    }

    public WindowsType UnderlyingType(Definition type) =>
        type.Type.GetFields().Select(type.Reader.GetFieldDefinition)
            .Single(field => type.Reader.GetString(field.Name) == "value__").DecodeSignature(Provider, []);

    public IEnumerable<WindowsType> FieldTypes(Definition type) =>
        type.Type.GetFields().Select(field => type.Reader.GetFieldDefinition(field).DecodeSignature(Provider, []));

    /// <summary>
    /// Returns an instance's identifier: the UUID version 5 (SHA-1) of its signature.
    /// </summary>
    public static Guid Identifier(string signature)
    {
        byte[] space = [0x11, 0xf4, 0x7a, 0xd5, 0x7b, 0x73, 0x42, 0xc0, 0xab, 0xae, 0x87, 0x8b, 0x1e, 0x16, 0xad, 0xee];
        var hash = SHA1.HashData([.. space, .. Encoding.UTF8.GetBytes(signature)])[..16];
        hash[6] = (byte)((hash[6] & 0x0f) | 0x50);
        hash[8] = (byte)((hash[8] & 0x3f) | 0x80);
        return new Guid(hash, bigEndian: true);
    }

    private WindowsType Resolve(MetadataReader reader, EntityHandle handle) => handle.Kind switch
    {
        HandleKind.TypeReference => Provider.GetTypeFromReference(reader, (TypeReferenceHandle)handle, 0),
        HandleKind.TypeDefinition => Provider.GetTypeFromDefinition(reader, (TypeDefinitionHandle)handle, 0),
        _ => Provider.GetTypeFromSpecification(reader, [], (TypeSpecificationHandle)handle, 0),
    };
}
