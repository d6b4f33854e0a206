'use strict';

// A router is [name, device, verdict, what failed, page, findings], a finding
// [rule, count]; a rule is [name, severity, routers], a failure [name, routers].
const VERDICTS = [['fine', 'good'], ['look', 'look'], ['fail', 'stop']];
const SEVERITIES = ['note', 'look', 'stop'];

function word(text, tone) {
  return make('span', {class: `word ${tone}`}, text);
}

function showKinds() {
  const box = document.getElementById('kinds');
  if (data.failures.length + data.rules.length === 0) {
    box.append(make('p', {}, 'None.'));
    return;
  }
  const rows = [];
  for (const [name, routers] of data.failures) {
    rows.push([word('fail', 'stop'), name, routers]);
  }
  for (const [name, severity, routers] of data.rules) {
    rows.push([word(SEVERITIES[severity], SEVERITIES[severity]), name, routers]);
  }
  box.append(make(
      'table', {},
      make('thead', {},
           make('tr', {}, make('th', {scope: 'col'}, 'Kind'),
                make('th', {scope: 'col'}, 'Name'),
                make('th', {scope: 'col', class: 'number'}, 'Routers'))),
      make('tbody', {}, ...rows.map(
          ([kind, name, routers]) => make(
              'tr', {}, make('td', {}, kind), make('td', {}, make('code', {}, name)),
              make('td', {class: 'number'}, number(routers)))))));
}

function routerRow(router) {
  const [name, device, verdict, what, page, findings] = router;
  const [text, tone] = VERDICTS[verdict];
  const shown = device === '' ? name : device;
  const title = make('th', {scope: 'row'},
                     page === '' ? shown : make('a', {href: page}, shown));
  if (device !== '') title.append(make('div', {class: 'what'}, name));
  if (what !== '') title.append(make('div', {class: 'what'}, what));
  const counts = new Map();
  for (const [rule, count] of findings) {
    counts.set(rule, (counts.get(rule) || 0) + Math.max(count, 1));
  }
  return make(
      'tr', {}, make('td', {}, word(text, tone)), title,
      ...data.rules.map((rule, i) => {
        const count = counts.get(i);
        if (count === undefined) return make('td', {class: 'cell'});
        return make('td', {class: `cell ${SEVERITIES[rule[1]]}`}, number(count));
      }));
}

function showRouters() {
  const box = document.getElementById('routers');
  const search = make('input', {type: 'search', id: 'search'});
  const verdict = make('select', {id: 'verdict'},
                       make('option', {value: ''}, 'any'),
                       ...VERDICTS.map(([text], i) => make(
                           'option', {value: String(i)}, text)));
  const rule = make('select', {id: 'rule'}, make('option', {value: ''}, 'any'),
                    ...data.rules.map(([name], i) => make(
                        'option', {value: String(i)}, name)));
  const count = make('p', {class: 'count', role: 'status', id: 'count'});
  const body = make('tbody', {});
  const more = make('button', {type: 'button'});
  const left = make('p', {class: 'printed note'});
  let found = [];
  let shown = 0;

  function show() {
    const rows = found.slice(shown, shown + PAGE).map(routerRow);
    shown += rows.length;
    body.append(...rows);
    const rest = found.length - shown;
    more.hidden = left.hidden = rest === 0;
    more.textContent = `Show ${number(Math.min(rest, PAGE))} more of ` +
        `${number(rest)} that are left`;
    left.textContent =
        `Not printed: ${number(rest)} more, which the page itself shows.`;
  }

  function filter() {
    const text = search.value.toLowerCase();
    found = data.routers.filter(
        ([name, device, its, what, , findings]) =>
            (verdict.value === '' || its === Number(verdict.value)) &&
            (rule.value === '' ||
             findings.some(([one]) => one === Number(rule.value))) &&
            (text === '' ||
             `${name}\n${device}\n${what}`.toLowerCase().includes(text)));
    count.textContent = `${number(found.length)} of ` +
        counted(data.routers.length, 'router', 'routers');
    body.replaceChildren();
    shown = 0;
    show();
  }

  for (const control of [search, verdict, rule]) {
    control.addEventListener('input', filter);
  }
  more.addEventListener('click', show);
  box.append(
      make('div', {class: 'tools'}, label('Search', search),
           label('Verdict', verdict), label('Finding', rule)),
      count,
      make('div', {class: 'scroll', tabindex: '0', role: 'region',
                   'aria-label': 'Routers and findings'},
           make('table', {},
                make('thead', {},
                     make('tr', {}, make('th', {scope: 'col'}, 'Verdict'),
                          make('th', {scope: 'col'}, 'Router'),
                          ...data.rules.map(([name]) => make(
                              'th', {scope: 'col', class: 'cell'},
                              make('code', {}, name))))),
                body)),
      more, left);
  filter();
}

showKinds();
showRouters();
