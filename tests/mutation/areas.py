"""What is changed in an area, and which tests are to notice it (patterns from the project's root).

Each room of the library is an area; `files` is what of the platform the profile store rests on.
"""

_FILES = ('FileRewrite', 'SiblingFile', 'ReplaceFile', 'WholeFile', 'AFile')


def _room(name, *others):
    return {'sources': [f'src/{name}/*.cpp', f'src/{name}/*.h'],
            'tests': [f'tests/{folder}/*.cpp' for folder in (name, 'faults', *others)]}


AREAS = {
    'profile': _room('profile'),
    'privatetags': _room('privatetags', 'handler'),
    'split': _room('split', 'handler'),
    'handler': _room('handler'),
    'vsd': _room('vsd'),
    'colornames': _room('colornames'),
    'files': {
        'sources': [f'src/platform/plinth/{name}.{ending}' for name in _FILES
                    for ending in ('cpp', 'h')],
        'tests': ['tests/profile/*.cpp', 'tests/faults/*.cpp',
                  *(f'tests/platform/{name}Test.cpp' for name in _FILES)],
    },
}


def tests_of(source):
    """The tests for a source of no area: those of the folder that mirrors its own."""
    folder = source.removeprefix('src/').rsplit('/', 1)[0].split('/')[0]
    return [f'tests/{folder}/*.cpp']
