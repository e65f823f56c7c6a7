<?php
// The file server of sabre/dav's own examples.
// Its answers must not begin with what newer versions of PHP think of its code.
ini_set('display_errors', '0');
date_default_timezone_set('UTC');
require_once 'Sabre/autoload.php';

$server = new \Sabre\DAV\Server(new \Sabre\DAV\FS\Directory('@FOLDER@'));
$server->setBaseUri('/');
$server->addPlugin(new \Sabre\DAV\Locks\Plugin(new \Sabre\DAV\Locks\Backend\File('@WORK@/locks')));
$server->addPlugin(new \Sabre\DAV\Browser\Plugin());
$server->addPlugin(new \Sabre\DAV\Browser\GuessContentType());
$server->exec();
