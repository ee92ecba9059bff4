#!/usr/bin/env python3
"""report.py RESULTS.json PICTURE.svg: prints the results of sceneBenchmarks as tables, and draws those of the loads."""

import json
import pathlib
import subprocess
import sys

# Kinds of documents: the name in tables, and the unit of the size.
DOCUMENTS = {
    "mesh": ("smooth mesh", "triangles"),
    "fan": ("fan", "triangles"),
    "geometries": ("small meshes", "meshes"),
    "angleCurves": ("angle curves", "curves"),
    "matrixCurves": ("matrix curves", "curves"),
    "tree": ("tree", "nodes"),
    "treeWithoutIds": ("tree without ids", "nodes"),
    "flatTree": ("flat tree", "nodes"),
    "chain": ("chain", "nodes"),
    "camerasAndLights": ("cameras, lights", "nodes"),
}
# Kinds whose times the picture shows as a function of the size.
LINES = ["mesh", "geometries", "angleCurves", "matrixCurves", "tree"]


def table(title, heads, rows):
    """Prints rows of texts. The first column is aligned left, the others right."""
    if not rows:
        return
    widths = [max(len(row[i]) for row in [heads] + rows) for i in range(len(heads))]
    print(f"\n{title}\n")
    for row in [heads, ["-" * width for width in widths]] + rows:
        cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        print("  ".join(cells).rstrip())


def number(value):
    """About three significant digits, without an exponent."""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def load_row(row, has_imports):
    label, unit = DOCUMENTS[row["kind"]]
    spread = f"{row['time_ratio_low']:.2f}-{row['time_ratio_high']:.2f}"
    cells = [f"{label}, {row['size']:,} {unit}", number(row["document_mb"]),
             number(row["open_ms"]), number(row["load_ms"]), f"{row['time_ratio']:.2f}", spread,
             f"{row['warm_time_ratio']:.2f}", number(row["warm_build_ms"]),
             number(row["open_mib"]), number(row["load_mib"]), f"{row['memory_ratio']:.2f}"]
    if "import_ms" in row:
        cells += [number(row["import_ms"]), f"{row['import_ms'] / row['open_ms']:.2f}",
                  number(row["import_mib"]), f"{row['import_mib'] / row['open_mib']:.2f}"]
    elif has_imports:
        cells += ["fails", "", "", ""]
    return cells


def show_loads(rows):
    heads = ["document", "MB", "open ms", "load ms", "ratio", "quartiles", "warm", "build ms",
             "open MiB", "load MiB", "ratio"]
    has_imports = any("import_ms" in row for row in rows)
    if has_imports:
        heads += ["Assimp ms", "ratio", "Assimp MiB", "ratio"]
    table("The document model's own open, and a whole load: processor time and peak resident memory\n"
          "Medians of processes that do only one of the two; warm: the ratio in one process that alternates.\n"
          "build: the load without opening the document.",
          heads, [load_row(row, has_imports) for row in rows])


def show_preparations(rows):
    table("Preparing a document, and pugixml's load of it and save of the result: processor time and peak resident memory",
          ["document", "size", "MB", "prepare ms", "load, save ms", "ratio", "prepare MiB", "load, save MiB", "ratio"],
          [[row["kind"], f"{row['size']:,}", number(row["document_mb"]), number(row["prepare_ms"]),
            number(row["rewrite_ms"]), f"{row['time_ratio']:.2f}", number(row["prepare_mib"]),
            number(row["rewrite_mib"]), f"{row['memory_ratio']:.2f}"] for row in rows])


def show_evaluations(rows):
    def cells(row):
        unit = "nodes" if row["kind"] == "fold" else "keys"
        return [f"{row['kind']}, {row['size']:,} {unit}", number(row["nanoseconds"])]
    table("Evaluation", ["what", "ns"], [cells(row) for row in rows])


def show_containers(rows):
    twins = {}
    for row in rows:
        twins.setdefault((row["family"], row["kind"], row["size"]), {})[row["twin"]] = row["seconds_per_item"] * 1e9
    table("Containers and those of the standard library, time per item", ["operation", "ns", "std ns", "ratio"],
          [[f"{family} {kind}, {size:,}", f"{pair['vesk']:.2f}", f"{pair['std']:.2f}", f"{pair['vesk'] / pair['std']:.2f}"]
           for (family, kind, size), pair in twins.items() if len(pair) == 2])


def read(path):
    """Returns the context of a run, its results with their names split, and the failures."""
    with open(path, encoding="utf-8") as file:
        run = json.load(file)
    rows = []
    failures = []
    for row in run["benchmarks"]:
        if row.get("error_occurred"):
            failures.append(f"{row['name']}: {row['error_message']}")
            continue
        parts = row["name"].split("/")
        row["family"], row["kind"] = parts[:2]
        sizes = [part for part in parts[2:] if part.isdigit()]
        row["size"] = int(sizes[0])
        row["twin"] = parts[2]
        row["nanoseconds"] = row["cpu_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[row["time_unit"]]
        rows.append(row)
    return run["context"], rows, failures


def write_plot_data(rows, folder):
    """Writes lines.dat, a block per kind with document size, open and load, and ratios.dat, a line per drawn document
    with the ratios of time and memory of a load, and of Assimp's import, to those of an open."""
    folder.mkdir(parents=True, exist_ok=True)
    blocks = []
    for kind in LINES:
        points = [row for row in rows if row["kind"] == kind]
        text = "".join(f"{row['document_mb']} {row['open_ms']} {row['load_ms']}\n" for row in points)
        blocks.append(f"\"{DOCUMENTS[kind][0]}\"\n{text}" if points else f"\"{DOCUMENTS[kind][0]}\"\nnan nan nan\n")
    (folder / "lines.dat").write_text("\n\n".join(blocks), encoding="utf-8")
    lines = []
    for row in rows:
        if row["is_drawn"]:
            label, unit = DOCUMENTS[row["kind"]]
            has_import = "import_ms" in row
            import_time = row["import_ms"] / row["open_ms"] if has_import else "nan"
            import_memory = row["import_mib"] / row["open_mib"] if has_import else "nan"
            lines.append(f"\"{label}, {row['size']:,} {unit}\" {row['time_ratio']} {import_time} "
                         f"{row['memory_ratio']} {import_memory}\n")
    (folder / "ratios.dat").write_text("".join(lines), encoding="utf-8")
    return bool(lines)


def draw(rows, results, picture):
    folder = results.parent / "plot"
    if not write_plot_data(rows, folder):
        return  # the filter excludes all documents of the picture
    script = pathlib.Path(__file__).with_name("plot.gp")
    subprocess.run(["gnuplot", "-e", f"folder='{folder}'; picture='{picture}'", str(script)], check=True)
    print(f"\npicture: {picture}")


def main():
    results, picture = map(pathlib.Path, sys.argv[1:])
    context, rows, failures = read(results)
    print(f"\n{context['date']}, {context['num_cpus']} processors of {context['mhz_per_cpu']} MHz, "
          f"load average {context['load_avg'][0]:.2f}")
    loads = [row for row in rows if row["family"] == "load"]
    show_loads(loads)
    show_preparations([row for row in rows if row["family"] == "prepare"])
    show_evaluations([row for row in rows if row["family"] == "evaluate"])
    show_containers([row for row in rows if row["family"] not in ("load", "prepare", "evaluate")])
    draw(loads, results, picture)
    for failure in failures:
        print(f"failed: {failure}", file=sys.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
