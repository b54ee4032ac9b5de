"""What is changed in an area, and which tests are to notice it (patterns from the project's root).
"""

AREAS = {
    'store': {
        'sources': ['src/profile/*.cpp', 'src/profile/T*.h', 'src/profile/VKCLProfile.h',
                    *(f'src/platform/plinth/{name}.cpp' for name in
                      ('FileRewrite', 'SiblingFile', 'ReplaceFile', 'WholeFile', 'AFile'))],
        'tests': ['tests/profile/*.cpp', 'tests/faults/*.cpp',
                  *(f'tests/platform/{name}Test.cpp' for name in
                    ('FileRewrite', 'SiblingFile', 'ReplaceFile', 'WholeFile', 'AFile'))],
    },
    'payloads': {
        'sources': ['src/privatetags/*.cpp', 'src/privatetags/*.h', 'src/handler/TagReading.*'],
        'tests': ['tests/privatetags/*.cpp', 'tests/handler/*.cpp', 'tests/faults/*.cpp'],
    },
    'colormodes': {
        'sources': ['src/colornames/*.cpp'],
        'tests': ['tests/colornames/*.cpp'],
    },
    'target': {
        'sources': ['src/handler/TargetParser.cpp'],
        'tests': ['tests/handler/TargetParserTest.cpp'],
    },
}


def tests_of(source):
    """The tests for a source of no area: those of the folder that mirrors its own."""
    folder = source.removeprefix('src/').rsplit('/', 1)[0].split('/')[0]
    return [f'tests/{folder}/*.cpp']
