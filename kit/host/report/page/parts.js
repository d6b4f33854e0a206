'use strict';

function passName(pass) {
  const name = data.passNames[pass - 1];
  return name === undefined ? 'outside of the passes' : `${pass} ${name}`;
}

function showLog() {
  if (data.log.length === 0) return;
  part('log', 'Log of the plug-in',
       counted(data.log.length + data.logLeftOut, 'record', 'records'),
       (body) => {
         body.append(make('p', {class: 'note'},
                          'Before each record: the number of the last ConfD ' +
                              'call before it.'));
         body.append(paged(data.log, ([call, text], li) => {
           li.append(make('span', {class: 'count'}, number(call)),
                     make('code', {}, text));
         }, 'log'));
         if (data.logLeftOut > 0) {
           body.append(make('p', {class: 'note'},
                            `${number(data.logLeftOut)} more are not in this ` +
                                'page; --log=FILE keeps them all.'));
         }
       });
}

function showLists() {
  texts('printed', 'Printed by the plug-in', data.printed,
        counted(data.printed.length, 'line', 'lines'));
  texts('violations', 'Constraints that the result breaks', data.violations,
        counted(data.violations.length, 'place', 'places'));
  texts('losses', 'Not carried over into the new model', data.losses,
        counted(data.losses.length, 'node', 'nodes'));
  texts('carried', 'Not rehearsed', data.carried,
        counted(data.carried.length, 'unknown module', 'unknown modules'));
}
