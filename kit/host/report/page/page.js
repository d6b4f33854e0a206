'use strict';

// All texts come escaped and are put into the page as texts, never as markup.
const data = JSON.parse(document.getElementById('data').textContent);

const PAGE = 100;  // rows that are shown in one go

const number = (n) => n.toLocaleString('en');
const counted = (n, one, many) => `${number(n)} ${n === 1 ? one : many}`;

// make('p', {class: 'note'}, 'text', child): an element.
function make(tag, attributes, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes || {})) {
    element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

// A <details> whose content is made when it is first opened.
function folded(kind, title, summary, render) {
  const body = make('div', {class: 'body'});
  const details = make(
      'details', {class: kind},
      make('summary', {}, title, make('span', {class: 'count'}, summary)), body);
  details.renderOnce = () => {
    details.renderOnce = () => {};
    render(body);
  };
  details.addEventListener('toggle', () => {
    if (details.open) details.renderOnce();
  });
  return details;
}

function addNav(id, title) {
  document.getElementById('nav').append(
      make('li', {}, make('a', {href: `#${id}`}, title)));
}

// One part of the page.
function part(id, title, summary, render) {
  const details = folded('part', make('h2', {}, title), summary, render);
  details.id = id;
  document.getElementById('parts').append(details);
  addNav(id, title);
  return details;
}

function unfold(details) {
  details.renderOnce();
  details.open = true;
}

// A list that shows some of its items, and more when it is asked to.
function paged(items, row, kind) {
  const list = make('ul', {class: `rows ${kind || ''}`});
  const more = make('button', {type: 'button'});
  const left = make('p', {class: 'printed note'});
  let shown = 0;
  function show() {
    const rows = items.slice(shown, shown + PAGE).map((item) => {
      const element = make('li', {});
      row(item, element);
      return element;
    });
    shown += rows.length;
    list.append(...rows);
    const rest = items.length - shown;
    more.hidden = left.hidden = rest === 0;
    more.textContent = `Show ${number(Math.min(rest, PAGE))} more of ` +
        `${number(rest)} that are left`;
    left.textContent =
        `Not printed: ${number(rest)} more, which the page itself shows.`;
    return rows[0];
  }
  show();
  more.addEventListener('click', () => {
    const first = show();
    first.tabIndex = -1;
    first.focus({preventScroll: true});
  });
  const box = make('div', {}, list, more, left);
  return box;
}

function label(text, control) {
  return make('label', {}, text, control);
}

function texts(id, title, items, summary) {
  if (items.length === 0) return;
  part(id, title, summary, (body) => body.append(paged(items, (item, li) => {
    li.append(make('code', {}, item));
  })));
}
