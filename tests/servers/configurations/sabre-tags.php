<?php
// A server that reports no changes and lists no whole trees, but gives each collection an id, and an entity tag that
// changes with whatever lies below it.
// Its answers must not begin with what newer versions of PHP think of its code.
ini_set('display_errors', '0');
date_default_timezone_set('UTC');
require_once 'Sabre/autoload.php';

// Nobody sees what is half done, also by the other processes.
$lock = fopen('@WORK@/lock', 'c');
flock($lock, in_array($_SERVER['REQUEST_METHOD'], array('PROPFIND', 'GET', 'HEAD', 'OPTIONS')) ? LOCK_SH : LOCK_EX);

file_put_contents('php://stderr', "asked: {$_SERVER['REQUEST_METHOD']} {$_SERVER['REQUEST_URI']}\n");

function store($path, $data) {
    $part = '@WORK@/part' . getmypid();
    file_put_contents($part, $data);
    rename($part, $path);
}

class TaggedFile extends \Sabre\DAV\FS\File {
    public function put($data) {
        store($this->path, $data);
    }

    // Files change several times in a second.
    public function getETag() {
        return '"' . fileinode($this->path) . '-' . filemtime($this->path) . '-' . md5_file($this->path) . '"';
    }
}

class TaggedDirectory extends \Sabre\DAV\FS\Directory implements \Sabre\DAV\IProperties {
    public function createFile($name, $data = null) {
        store($this->path . '/' . $name, $data);
    }

    public function getChild($name) {
        $path = $this->path . '/' . $name;
        if (!file_exists($path)) {
            throw new \Sabre\DAV\Exception\NotFound('There is no ' . $name);
        }
        return is_dir($path) ? new TaggedDirectory($path) : new TaggedFile($path);
    }

    public function getETag() {
        $all = '';
        foreach ($this->getChildren() as $child) {
            $id = $child instanceof TaggedDirectory ? $child->getId() : '';
            $all .= $child->getName() . "\0" . $id . $child->getETag() . "\0";
        }
        return '"' . md5($all) . '"';
    }

    public function getId() {
        return (string)fileinode($this->path);
    }

    public function getProperties($names) {
        $all = array(
            '{DAV:}getetag' => function () { return $this->getETag(); },
            '{http://owncloud.org/ns}fileid' => function () { return $this->getId(); },
            '{http://owncloud.org/ns}id' => function () { return $this->getId() . 'tags'; },
        );
        $values = array();
        foreach (array_intersect_key($all, array_flip($names)) as $name => $value) {
            $values[$name] = $value();
        }
        return $values;
    }

    public function updateProperties($changes) {
        return false;
    }
}

class TaggedTree extends \Sabre\DAV\ObjectTree {
    // Of its own accord sabre/dav copies and deletes, and what is moved gets another id.
    public function move($from, $to) {
        rename('@FOLDER@/' . $from, '@FOLDER@/' . $to);
        $this->cache = array();
    }
}

class OneLevel extends \Sabre\DAV\ServerPlugin {
    private $server;

    public function initialize(\Sabre\DAV\Server $server) {
        $this->server = $server;
        $server->subscribeEvent('beforeMethod', array($this, 'check'));
    }

    public function check($method) {
        if ($method === 'PROPFIND' && $this->server->httpRequest->getHeader('Depth') === 'infinity') {
            throw new \Sabre\DAV\Exception\Forbidden('Not with Depth: infinity');
        }
    }
}

$server = new \Sabre\DAV\Server(new TaggedTree(new TaggedDirectory('@FOLDER@')));
$server->setBaseUri('/');
$server->addPlugin(new \Sabre\DAV\Locks\Plugin(new \Sabre\DAV\Locks\Backend\File('@WORK@/locks')));
$server->addPlugin(new \Sabre\DAV\Browser\GuessContentType());
$server->addPlugin(new OneLevel());
$server->exec();
