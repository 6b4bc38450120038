def write_arrays(path, header, arrays):
    """Writes a C++ file that defines the constants of namespace renewer that `header` declares.

    `arrays` maps the type and name of each constant to its bytes.
    """
    with open(path, "w", encoding="ascii") as file:
        print(f'// Made at build time.\n#include "{header}"\n\nnamespace renewer {{', file=file)
        for declaration, data in arrays.items():
            print(f"\nconst {declaration} = {{", file=file)
            for i in range(0, len(data), 24):
                print(",".join(map(str, data[i : i + 24])) + ",", file=file)
            print("};", file=file)
        print("\n} // namespace renewer", file=file)
