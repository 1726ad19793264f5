"""What the command's --help says, taken apart for the pages that are made from it."""
import re
import subprocess

DESCRIPTION_COLUMN = 30  # of the help, where what an option does begins


def help_of(command, *words):
    text = subprocess.run([command, *words, "--help"], capture_output=True, check=True, text=True).stdout
    return text.replace("\r\n", "\n").rstrip().split("\n")


def sections(lines):
    """{heading: lines}: "" is what stands before the first, "footer" what follows after a blank line."""
    found = {"": []}
    heading = ""
    for line in lines:
        if re.fullmatch(r"(Positionals|Options|Subcommands):", line):
            heading = line[:-1]
        elif heading == "Options" and not line:
            heading = "footer"
        else:
            found.setdefault(heading, []).append(line)
            continue
        found.setdefault(heading, [])
    return found


def rows(lines):
    """[(names, description)] of a list of options or of commands."""
    found = []
    for line in lines:
        names, description = line.strip(), ""
        if line.startswith(" " * DESCRIPTION_COLUMN):
            names, description = "", line.strip()
        elif line[DESCRIPTION_COLUMN - 1:DESCRIPTION_COLUMN] == " ":
            names, description = line[:DESCRIPTION_COLUMN].strip(), line[DESCRIPTION_COLUMN:]
        if names:
            found.append([names, description])
        elif description:
            found[-1][1] = (found[-1][1] + " " + description).strip()
    return found
