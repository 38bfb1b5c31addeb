using System.Collections.Immutable;
using System.Reflection.Metadata;

namespace PlatformMetadata;

/// <summary>Writes the metadata of a type as lines of subject, aspect and value.</summary>
internal sealed class Facts(Library library, TextWriter output)
{
    // The number of inherited vtable slots: delegates derive from IUnknown, other interfaces
    // from IInspectable.
    private const int DelegateSlots = 3;
    private const int InterfaceSlots = 6;

    // The value of MarshalingType.Agile.
    private const int Agile = 2;

    /// <summary>Writes all facts of a type such as <c>IVectorView&lt;Radio&gt;</c>.</summary>
    public void Write(string name)
    {
        var bracket = name.IndexOf('<');
        if (library.ByName(bracket < 0 ? name : name[..bracket]) is not { } type)
        {
            return; // an interface of classic COM, which has no metadata
        }
        var arguments = bracket < 0 ? [] : Arguments(name[(bracket + 1)..^1]);
        Line(name, "name", type.FullName.Split('`')[0]);
        switch (type.Base)
        {
            case "Enum":
                WriteEnumeration(name, type);
                break;
            case "ValueType":
                Line(name, "fields", string.Join(", ", library.FieldTypes(type).Select(field => field.Abi)));
                break;
            case "MulticastDelegate":
                WriteInterface(name, type, arguments, "IUnknown", DelegateSlots);
                break;
            case "":
                WriteInterface(name, type, arguments, "IInspectable", InterfaceSlots);
                break;
            default:
                WriteClass(name, type);
                break;
        }
    }

    private void WriteEnumeration(string name, Definition type)
    {
        Line(name, "type", library.UnderlyingType(type).Name);
        foreach (var field in type.Type.GetFields().Select(type.Reader.GetFieldDefinition))
        {
            if (!field.GetDefaultValue().IsNil)
            {
                var constant = type.Reader.GetConstant(field.GetDefaultValue());
                var value = type.Reader.GetBlobReader(constant.Value).ReadConstant(constant.TypeCode);
                Line(name, $"value {type.Reader.GetString(field.Name)}", $"{value}");
            }
        }
    }

    private void WriteClass(string name, Definition type)
    {
        if (library.DefaultInterface(type) is { } standard)
        {
            Line(name, "default interface", standard.Name);
        }
        var attributes = type.Type.GetCustomAttributes();
        foreach (var arguments in Attributes.Of(type.Reader, attributes, "MarshalingBehaviorAttribute"))
        {
            Line(name, "agile", (int)arguments[0]! == Agile ? "yes" : "no");
        }
        foreach (var arguments in Attributes.Of(type.Reader, attributes, "StaticAttribute"))
        {
            Line(library.ByFullName((string)arguments[0]!).Name, "statics of", name);
        }
        foreach (var arguments in Attributes.Of(type.Reader, attributes, "ActivatableAttribute"))
        {
            // If the attribute names no factory interface, IActivationFactory creates the objects.
            var factory = arguments[0] is string full ? library.ByFullName(full).Name : "IActivationFactory";
            Line(name, $"made by {factory}", "yes");
        }
    }

    private void WriteInterface(
        string name, Definition type, ImmutableArray<WindowsType> arguments, string baseName, int slot)
    {
        var signature = library.Describe(type).Signature;
        if (arguments.Length > 0)
        {
            signature = Library.Instantiate(library.Describe(type), arguments).Signature;
            Line(name, "signature", signature);
        }
        var identifier = arguments.Length > 0 ? Library.Identifier(signature) : type.Identifier;
        Line(name, "id", $"{identifier}");
        if (arguments.Length != type.Type.GetGenericParameters().Count)
        {
            return; // only an instance of a generic interface has members
        }
        Line(name, "base", baseName);
        foreach (var method in type.Type.GetMethods().Select(type.Reader.GetMethodDefinition))
        {
            if (type.Reader.GetString(method.Name) == ".ctor")
            {
                continue;
            }
            var member = MemberName(type.Reader, method);
            Line(name, $"slot {member}", $"{slot++}");
            Line(name, $"parameters {member}", string.Join(", ", Parameters(type.Reader, method, arguments)));
        }
        Line(name, "slots", $"{slot}");
    }

    // Overloaded methods have different names in the binary interface.
    private static string MemberName(MetadataReader reader, MethodDefinition method) =>
        Attributes.Of(reader, method.GetCustomAttributes(), "OverloadAttribute")
            .Select(arguments => (string)arguments[0]!)
            .FirstOrDefault(reader.GetString(method.Name));

    // An array is passed as its length and a pointer. The result is the last parameter.
    private IEnumerable<string> Parameters(
        MetadataReader reader, MethodDefinition method, ImmutableArray<WindowsType> arguments)
    {
        var signature = method.DecodeSignature(library.Provider, arguments);
        var types = signature.ParameterTypes;
        if (signature.ReturnType.Name != "void")
        {
            types = types.Add(signature.ReturnType with { IsReference = true });
        }
        foreach (var type in types)
        {
            var star = type.IsReference ? "*" : "";
            if (type.Element is { } element)
            {
                yield return "UINT32" + star;
                yield return element.Abi + "*" + star;
            }
            else
            {
                yield return type.Abi + star;
            }
        }
    }

    private ImmutableArray<WindowsType> Arguments(string list)
    {
        var depth = 0;
        var start = 0;
        var arguments = ImmutableArray.CreateBuilder<WindowsType>();
        for (var at = 0; at <= list.Length; ++at)
        {
            if (at == list.Length || (list[at] == ',' && depth == 0))
            {
                arguments.Add(Argument(list[start..at]));
                start = at + 1;
            }
            else
            {
                depth += list[at] switch { '<' => 1, '>' => -1, _ => 0 };
            }
        }
        return arguments.ToImmutable();
    }

    private WindowsType Argument(string name)
    {
        var bracket = name.IndexOf('<');
        var type = library.ByName(bracket < 0 ? name : name[..bracket])
            ?? throw new InvalidDataException($"{name} is in no metadata");
        return bracket < 0
            ? library.Describe(type)
            : Library.Instantiate(library.Describe(type), Arguments(name[(bracket + 1)..^1]));
    }

    private void Line(string subject, string aspect, string value) => output.WriteLine($"{subject}\t{aspect}\t{value}");
}
